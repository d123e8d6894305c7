#pragma once

#include <cstddef>
#include <functional>

namespace toolkit::quorvis {

// The maximum size of a value from a file. Longer values are cut.
constexpr std::size_t kMaxValueSize = std::size_t{8} << 10;

// Called repeatedly while untrusted data is parsed. Throws when the parsing must end, for example at a deadline.
using ProgressCheck = std::function<void()>;

}  // namespace toolkit::quorvis
