#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// A regular file that is read at chosen offsets, or bytes that are read in the same way.
class RandomAccessFile {
  public:
    // Called with a number of bytes before they are read. It may throw to end the reading.
    using BeforeRead = std::function<void(std::uint64_t bytes)>;

    // `start`: bytes at the start of the file that were read before.
    explicit RandomAccessFile(kest::Descriptor file, BeforeRead beforeRead = {}, std::string start = {});

    // Bytes in memory.
    explicit RandomAccessFile(std::string content, BeforeRead beforeRead = {});
    // A part of another file. REQUIRES: the whole outlives this, and contains the part.
    RandomAccessFile(const RandomAccessFile& whole, std::uint64_t offset, std::uint64_t size);

    const BeforeRead& beforeRead() const { return beforeRead_; }
    std::uint64_t size() const { return size_; }

    // Reads exactly `length` bytes. False when the file does not have them all.
    bool read(std::uint64_t offset, std::uint64_t length, std::string& bytes) const;
    // Reads up to `length` bytes: fewer at the end of the file.
    std::string readUpTo(std::uint64_t offset, std::uint64_t length) const;

  private:
    bool readDescriptor(std::uint64_t offset, std::string& bytes) const;

    kest::Descriptor file_;
    BeforeRead beforeRead_;
    std::string content_;                      // all bytes, or those at the start of a file
    const RandomAccessFile* whole_ = nullptr;  // unless it is no part
    std::uint64_t start_ = 0;                  // of the part
    std::uint64_t size_ = 0;
};

}  // namespace toolkit::quorvis
