#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kest {

// File names and foreign texts for use in messages, in printable ASCII, which a log accepts in any locale. Every other
// byte becomes \xHH, and a backslash is doubled.
//     escaped("caf\xC3\xA9")   ->   caf\xC3\xA9, in ASCII
std::string escaped(std::string_view bytes);

// The same in quotation marks. A longer text ends with "..." after this number of bytes.
inline constexpr std::size_t kMaxQuotedBytes = 200;
std::string quoted(std::string_view name);

}  // namespace kest
