// The beginning and the end that the configuration files of both scanners have in common.
#pragma once

#include <array>

namespace zav {

// The texts are written unchanged, in order.
extern const std::array<const char*, 4> kConfigFrameHead;
extern const std::array<const char*, 2> kConfigFrameTail;

}  // namespace zav
