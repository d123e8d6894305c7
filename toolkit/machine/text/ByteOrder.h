// Numbers in files. REQUIRES in each: offset + width <= bytes.size(), width <= 8.
#pragma once

#include <cstdint>
#include <string_view>

namespace toolkit {

// The number at `offset` whose highest byte comes first.
inline std::uint64_t bigEndian(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value = value << 8U | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

// The number at `offset` whose lowest byte comes first.
inline std::uint64_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i > 0; --i)
        value = value << 8U | static_cast<unsigned char>(bytes[offset + i - 1]);
    return value;
}

}  // namespace toolkit
