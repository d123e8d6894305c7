#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zavfuzz {

// A file in memory with the fuzzer's input, for code that reads files by path.
class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* data, std::size_t size);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    int descriptor_;
};

}  // namespace zavfuzz
