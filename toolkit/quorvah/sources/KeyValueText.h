// Texts of /proc and /etc with a key and a value per line, and lists of words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

// The words of a text, which are separated by blanks or tabs.
std::vector<std::string> wordsOf(std::string_view text);

// The value of the line that starts with the key: "16384 kB" in "MemTotal:   16384 kB". The colon is optional. Empty if
// there is no such line.
std::string_view valueForKey(std::string_view text, std::string_view key);

// The size in KiB that a line of /proc/meminfo states, such as "MemTotal:   16 kB". Nothing for another unit or none.
Count kibOfKey(std::string_view meminfo, std::string_view key);

}  // namespace toolkit::quorvah
