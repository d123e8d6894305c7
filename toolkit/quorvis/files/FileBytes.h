#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// The outcome of reading an open file.
enum class BytesRead : std::uint8_t {
    All,      // up to its end
    Start,    // up to the limit
    TooMany,  // the file exceeds the limit
    Changed,  // the size of the file changed during both attempts
    Failed,   // errno is set
};

// Called before each block is read. May throw to stop reading.
using OnRead = std::function<void(std::uint64_t bytes)>;

// Reads a regular file from its start: the whole file, which may have at most `limit` bytes, or else at most the first
// `limit` bytes. Reads it a second time if its size changes meanwhile. `size` is that of the file when it was opened.
BytesRead readBytes(const kest::Descriptor& file, std::uint64_t size, std::uint64_t limit, bool whole,
                    std::string& bytes, const OnRead& onRead);

// The SHA-256 of the whole file in lower-case hexadecimal digits.
BytesRead sha256Of(const kest::Descriptor& file, std::uint64_t limit, std::string& sum, const OnRead& onRead);

}  // namespace toolkit::quorvis
