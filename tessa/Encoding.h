#pragma once

#include <expat.h>

namespace tessa {

// An Expat handler for the encodings that Expat does not read by itself: those of the system's iconv that
// extend ASCII by characters of up to three bytes.
int XMLCALL useSystemEncoding(void* unused, const XML_Char* name, XML_Encoding* encoding);

}  // namespace tessa
