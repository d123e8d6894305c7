#include "fuzz/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace zavfuzz {

MemoryFile::MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor_(::memfd_create("input", 0)) {
    if (descriptor_ < 0 || ::write(descriptor_, data, size) != static_cast<ssize_t>(size)) std::abort();
}

MemoryFile::~MemoryFile() {
    ::close(descriptor_);
}

}  // namespace zavfuzz
