// Texts of /proc and /etc with a key and a value per line, and lists of words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

// The words of a text, which are separated by blanks or tabs.
std::vector<std::string> wordsOf(std::string_view text);

// The value of the line that starts with the key: "16384 kB" in "MemTotal:   16384 kB". The colon is optional. Empty if
// there is no such line.
std::string_view valueForKey(std::string_view text, std::string_view key);

}  // namespace toolkit::quorvah
