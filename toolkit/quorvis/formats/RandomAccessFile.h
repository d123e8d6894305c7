#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// A regular file that is read at chosen offsets.
class RandomAccessFile {
  public:
    // Called with a number of bytes before they are read. It may throw to end the reading.
    using BeforeRead = std::function<void(std::uint64_t bytes)>;

    explicit RandomAccessFile(kest::Descriptor file, BeforeRead beforeRead = {});

    std::uint64_t size() const { return size_; }

    // Reads exactly `length` bytes. False when the file does not have them all.
    bool read(std::uint64_t offset, std::uint64_t length, std::string& bytes) const;
    // Reads up to `length` bytes: fewer at the end of the file.
    std::string readUpTo(std::uint64_t offset, std::uint64_t length) const;

  private:
    kest::Descriptor file_;
    BeforeRead beforeRead_;
    std::uint64_t size_ = 0;
};

}  // namespace toolkit::quorvis
