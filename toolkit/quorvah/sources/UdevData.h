#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// A property ("ID_FS_UUID") in a file of /run/udev/data; empty if there is none. For example
//     E:ID_FS_UUID=2d9c5e4b-...
std::string_view udevProperty(std::string_view text, std::string_view name);

// Decodes the value of a property whose name ends in "_ENC". It may contain bytes written as "\x20".
std::string withoutHexEscapes(std::string_view text);

}  // namespace toolkit::quorvah
