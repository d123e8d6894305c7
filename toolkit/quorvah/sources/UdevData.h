#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// A property of a device ("ID_FS_UUID") in one of udev's files below /run/udev/data; empty when it has none.
//     E:ID_FS_UUID=2d9c5e4b-...
std::string_view udevProperty(std::string_view text, std::string_view name);

// The text meant by a property whose name ends in "_ENC", in which bytes may be written as "\x20".
std::string withoutHexEscapes(std::string_view text);

}  // namespace toolkit::quorvah
