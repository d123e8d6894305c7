#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "kest/Descriptor.h"

namespace toolkit::quorvah {

// A memory area that a process shares with its forked child. The child appends texts, the parent reads them.
class SharedBuffer {
  public:
    // Throws std::system_error if there is not enough memory.
    SharedBuffer();

    // Appends a text and returns its offset; std::nullopt if there is not enough memory.
    std::optional<std::uint64_t> append(std::string_view text);

    // The text with this offset and size; null if they do not lie within the buffer. The text stays valid after the
    // buffer is destroyed.
    std::shared_ptr<const void> at(std::uint64_t place, std::uint64_t size) const;

  private:
    kest::Descriptor file_;
    std::uint64_t end_ = 0;
};

}  // namespace toolkit::quorvah
