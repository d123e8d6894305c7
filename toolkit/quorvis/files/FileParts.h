#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kest/Descriptor.h"
#include "toolkit/quorvis/leaves/Leaf.h"

namespace toolkit::quorvis {

class Effort;

// A regular file of which only some parts are needed.
class FileParts {
  public:
    // `effort` counts what is read, and may end that; it may be null.
    explicit FileParts(kest::Descriptor file, Effort* effort = nullptr);

    std::uint64_t size() const { return size_; }

    // Exactly `length` bytes; false when the file does not have them all.
    bool read(std::uint64_t offset, std::uint64_t length, std::string& bytes) const;
    // As many of `length` bytes as there are.
    std::string readUpTo(std::uint64_t offset, std::uint64_t length) const;

  private:
    kest::Descriptor file_;
    Effort* effort_;
    std::uint64_t size_ = 0;
};

// The parts of the file at `path`. None when there is none, and when it cannot be read, which fails in the
// result.
std::optional<FileParts> partsOf(const std::string& path, Machine& machine, LeafResult& result);

}  // namespace toolkit::quorvis
