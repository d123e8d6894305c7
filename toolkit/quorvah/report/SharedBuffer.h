#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "kest/Descriptor.h"

namespace toolkit::quorvah {

// Texts that a child process leaves for the process that it was forked from, in memory that both see.
class SharedBuffer {
  public:
    // Throws std::system_error when there is no memory to share.
    SharedBuffer();

    // Adds a text and tells where it stands; none when memory is lacking.
    std::optional<std::uint64_t> append(std::string_view text);

    // The text of this size that was added there; null when there is none. It stays when this goes.
    std::shared_ptr<const void> at(std::uint64_t place, std::uint64_t size) const;

  private:
    kest::Descriptor file_;
    std::uint64_t end_ = 0;
};

}  // namespace toolkit::quorvah
