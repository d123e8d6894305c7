#pragma once

#include <cstddef>

#include "kest/Descriptor.h"

namespace tessa {

// A regular file that is read from its beginning. Whatever else stands at its path, a pipe or a device that would
// never end for instance, is refused without waiting for it; links are followed.
class InputFile {
  public:
    // More than any inventory has.
    static constexpr std::size_t kLargest = std::size_t{1} << 30;

    // Throws Fault when there is no such file or it is larger than `largest`, std::bad_alloc when memory runs out.
    explicit InputFile(const char* path, std::size_t largest = kLargest);

    // The number of bytes read, 0 at the end. Throws Fault after an error, and when the file has grown beyond
    // `largest` meanwhile.
    int read(void* buffer, int size);

    // The number of bytes at the beginning that were read; leaves the place of read() alone.
    std::size_t peek(char* buffer, std::size_t size) const;

    // From the beginning again.
    void rewind();

  private:
    std::size_t largest_;
    kest::Descriptor file_;
    std::size_t given_ = 0;
};

}  // namespace tessa
