// How names of files and of what documents hold appear in messages: in printable ASCII, which a log can carry in
// any locale.
#pragma once

#include <string>
#include <string_view>

namespace tessa {

// Every byte that is not printable ASCII as \xHH, a backslash as two.
//     shown("caf\xC3\xA9")   ->   caf\xC3\xA9, in ASCII
std::string shown(std::string_view bytes);

// The same in quotation marks, cut off with "..." where it is very long.
std::string quoted(std::string_view name);

}  // namespace tessa
