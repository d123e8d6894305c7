#pragma once

#include <cstdint>
#include <string_view>

namespace toolkit::quorvis {

// Keeps the sum of an output so small that a reader of moderate means can hold its tree. What does not fit any more is
// left out, rather than that all is refused.
class OutputBound {
  public:
    // Whether this element still fits; then it counts.
    bool admits(std::string_view element);

  private:
    std::uint64_t held_ = 0;
};

}  // namespace toolkit::quorvis
