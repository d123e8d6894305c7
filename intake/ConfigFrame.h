// What the configuration files of both scanners have in common: what stands before and behind their own
// section.
#pragma once

#include <array>

namespace zav {

// Each text is to be written as it stands, in order.
extern const std::array<const char*, 4> kConfigFrameHead;
extern const std::array<const char*, 2> kConfigFrameTail;

}  // namespace zav
