#pragma once

#include <expat.h>

#include <string>

namespace zavbench {

// Feeds a file to a parser in blocks of 64 KiB. False if the file cannot be read or is refused.
bool parseFile(XML_Parser parser, const std::string& path);

// Reads a file with Expat without handlers: the least that any reader over Expat costs. False if the file is refused.
bool tokeniseWithExpat(const std::string& path);

}  // namespace zavbench
