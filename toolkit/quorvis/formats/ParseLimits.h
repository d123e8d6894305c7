#pragma once

#include <cstddef>
#include <functional>

namespace toolkit::quorvis {

// Longer values of a file are cut.
constexpr std::size_t kMaxValueSize = std::size_t{8} << 10;

// Called again and again by code that parses much foreign data. It throws when the parsing must end.
using Tick = std::function<void()>;

}  // namespace toolkit::quorvis
