// Small texts of /proc, /sys and /etc taken apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

// What stands between blanks.
std::vector<std::string> wordsOf(std::string_view text);

// What stands behind a key at the front of one of the lines: "16384 kB" of "MemTotal:   16384 kB". The colon
// may be missing.
std::string_view valueOf(std::string_view text, std::string_view key);

// The value of the kernel parameter "key=value" that stands last; empty when there is none.
std::string bootParameter(std::string_view commandLine, std::string_view key);

// The kernel's command line with the values of passwords and the like replaced by "***".
std::string withoutSecrets(std::string_view commandLine);

}  // namespace toolkit::quorvah
