// Small files in binary formats, made of what their readers look at.
#pragma once

#include <string>

namespace quorvistest {

// A library or program for x86-64 with one section of content; the soname may be empty.
std::string elfFile(const std::string& section, const std::string& content, const std::string& soname);

// A Java archive that holds nothing but its manifest, stored.
std::string jarFile(const std::string& manifest);

// A Windows program with one text in its version resource.
std::string windowsProgram(const std::string& name, const std::string& value);

// What rpm keeps of a package; `version` is "1.2-3".
std::string rpmHeader(const std::string& name, const std::string& version, const std::string& source);

}  // namespace quorvistest
