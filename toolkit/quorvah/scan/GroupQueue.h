#pragma once

#include <cstddef>
#include <optional>

#include "kest/Descriptor.h"

namespace toolkit::quorvah {

// The groups that no process has begun to gather. It is a pipe with their numbers, so that several processes can take from
// it and none can spoil more than what it takes.
class GroupQueue {
  public:
    // Contains the numbers from 0 to count - 1. Throws std::system_error if there can be no pipe.
    explicit GroupQueue(std::size_t count);

    // Removes the smallest number; nothing if there is none. May be called in children of this process.
    std::optional<std::size_t> take();

  private:
    kest::Descriptor out_;
    kest::Descriptor in_;
};

}  // namespace toolkit::quorvah
