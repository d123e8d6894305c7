#pragma once

#include <string_view>

namespace zavcli {

// What a return code of the library means, as a sentence without capital and full stop that can follow "zav:
// ".
std::string_view sentence(int code);

}  // namespace zavcli
