#pragma once

#include <compare>
#include <cstdint>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// Tells one state of one file from all others. Times are nanoseconds since 1970.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t changed = 0;   // as the kernel sets it whenever the content, the mode or the times are set
    std::int64_t modified = 0;  // as anyone may set it
    auto operator<=>(const FileState&) const = default;
};

// Whether another content means another state, as local file systems have it that can be written to: not so where the
// kernel, a program or another machine makes files up, and in images, whose times are those of whoever made them.
bool keepsStates(const kest::Descriptor& file);

}  // namespace toolkit::quorvis
