#pragma once

#include <cstddef>
#include <stdexcept>

namespace tessa {

// Thrown when a document needs more memory than its budget allows.
class DocumentTooLarge : public std::runtime_error {
  public:
    DocumentTooLarge() : std::runtime_error("document too large") {}
};

// The number of bytes that a document may allocate, shared by all its parts.
class MemoryBudget {
  public:
    // Throws DocumentTooLarge if the limit would be exceeded.
    void charge(std::size_t bytes) {
        if (bytes > left_) throw DocumentTooLarge();
        left_ -= bytes;
    }
    void refund(std::size_t bytes) { left_ += bytes; }

  private:
    // Text counts five times: one byte, and four that are reserved for its wide form.
    std::size_t left_ = std::size_t{5} << 28;
};

}  // namespace tessa
