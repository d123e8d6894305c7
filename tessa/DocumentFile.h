#pragma once

#include <cstddef>

#include "kest/Descriptor.h"

namespace tessa {

// A regular file that is read sequentially. Anything else at its path, such as a pipe or an endless device, is refused
// without blocking. Links are followed.
class DocumentFile {
  public:
    // Larger than any inventory.
    static constexpr std::size_t kMaxSize = std::size_t{1} << 30;

    // Throws Fault if the file cannot be opened or is larger than `maxSize`, and std::bad_alloc.
    explicit DocumentFile(const char* path, std::size_t maxSize = kMaxSize);

    // Returns the number of bytes read, 0 at the end. Throws Fault on error and when the file has grown beyond the
    // maximum size.
    int read(void* buffer, int size);

    // Reads from the beginning of the file and returns the number of bytes. Does not affect the position of read().
    std::size_t peek(char* buffer, std::size_t size) const;

    // Makes read() start at the beginning again.
    void rewind();

  private:
    std::size_t maxSize_;
    kest::Descriptor file_;
    std::size_t given_ = 0;
};

}  // namespace tessa
