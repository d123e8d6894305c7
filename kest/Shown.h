#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kest {

// How names of files and texts of others appear in messages: in printable ASCII, which a log can carry in any
// locale. Every other byte is \xHH, and a backslash two.
//     shown("caf\xC3\xA9")   ->   caf\xC3\xA9, in ASCII
std::string shown(std::string_view bytes);

// The same in quotation marks, cut off with "..." behind so many bytes.
inline constexpr std::size_t kLongestQuoted = 200;
std::string quoted(std::string_view name);

}  // namespace kest
