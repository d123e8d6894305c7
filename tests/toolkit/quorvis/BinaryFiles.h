// Creates small files in binary formats with only the parts that their readers use.
#pragma once

#include <string>

namespace quorvistest {

// A library or program for x86-64 with one section; the soname may be empty.
std::string elfFile(const std::string& section, const std::string& content, const std::string& soname);

// A Java archive with only an uncompressed manifest.
std::string jarFile(const std::string& manifest);

// A Java archive with only the uncompressed properties that Maven adds.
std::string mavenFile(const std::string& group, const std::string& artifact, const std::string& version);

// An archive with one uncompressed member.
std::string archiveWith(const std::string& name, const std::string& content);

// A program of Go that was built from this module. `others` are further lines of its build information.
std::string goProgram(const std::string& module, const std::string& version, const std::string& others = {});

// A program of Rust with a list of its crates in JSON.
std::string rustProgram(const std::string& crates);

// A Windows program with one text in its version resource.
std::string windowsProgram(const std::string& name, const std::string& value);

// The header of a package in the rpm database; `version` is "1.2-3". The package may have a file.
std::string rpmHeader(const std::string& name, const std::string& version, const std::string& source,
                      const std::string& file = {});

}  // namespace quorvistest
