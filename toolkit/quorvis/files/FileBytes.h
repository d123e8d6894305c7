#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// How reading an open file went: to its end; up to the limit; beyond the limit; with a size that changed twice; with
// an error, which errno tells.
enum class BytesRead : std::uint8_t { All, Start, TooMany, Changed, Failed };

// Is told of every piece before it is read, and throws to end that.
using OnRead = std::function<void(std::uint64_t bytes)>;

// Reads a regular file from its start. When it is to be `whole`, more than `limit` bytes are too many; else no more than
// the first `limit` bytes are read. It is read once more when its size changes meanwhile.
BytesRead readBytes(const kest::Descriptor& file, std::uint64_t limit, bool whole, std::string& bytes,
                    const OnRead& onRead);

// The SHA-256 of the whole file in lower-case hexadecimal digits.
BytesRead sha256Of(const kest::Descriptor& file, std::uint64_t limit, std::string& sum, const OnRead& onRead);

}  // namespace toolkit::quorvis
