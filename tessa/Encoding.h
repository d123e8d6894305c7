#pragma once

#include <expat.h>

namespace tessa {

// Describes to Expat an encoding that it does not read by itself. False when the system's iconv does not know
// it either, or when it does not extend ASCII by characters of up to three bytes. Throws std::bad_alloc.
bool useSystemEncoding(const char* name, XML_Encoding& encoding);

}  // namespace tessa
