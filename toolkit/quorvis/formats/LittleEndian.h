#pragma once

#include <cstdint>
#include <string_view>

namespace toolkit::quorvis {

// The number that stands at `offset`, its lowest byte first. REQUIRES: offset + width <= bytes.size(), width
// <= 8.
inline std::uint64_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i > 0; --i)
        value = value << 8U | static_cast<unsigned char>(bytes[offset + i - 1]);
    return value;
}

}  // namespace toolkit::quorvis
