#pragma once

#include <expat.h>

#include <string>

namespace zavbench {

// Feeds a file to a parser in blocks of 64 KiB. False when it cannot be read or is refused.
bool parseFile(XML_Parser parser, const std::string& path);

// Expat reading a file without a handler: the least that any reader over Expat costs. False when the file is
// refused.
bool tokeniseWithExpat(const std::string& path);

}  // namespace zavbench
