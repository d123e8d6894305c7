#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvis {

// The arguments of a process, given with a NUL after each, separated by blanks and without secrets. "***" replaces the values
// of options and assignments whose names suggest a password, key or token ("--password=x", "--token x", "-Dx.key=v",
// "PGPASSWORD=x", "Authorization: x", "-px"), users and passwords in URLs, and text that looks like a key. When in doubt a
// value is replaced.
std::string argumentsWithoutSecrets(std::string_view arguments);

}  // namespace toolkit::quorvis
