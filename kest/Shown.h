#pragma once

#include <string>
#include <string_view>

namespace kest {

// How names of files and texts of others appear in messages: in printable ASCII, which a log can carry in any
// locale. Every other byte is \xHH, and a backslash two.
//     shown("caf\xC3\xA9")   ->   caf\xC3\xA9, in ASCII
std::string shown(std::string_view bytes);

}  // namespace kest
