#pragma once

#include <cstdint>
#include <string_view>

namespace toolkit {

// The number that stands at `offset`, its highest byte first. REQUIRES: offset + width <= bytes.size(), width
// <= 8.
inline std::uint64_t bigEndian(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint64_t value = 0;
    for (const char c : bytes.substr(offset, width)) value = value << 8 | static_cast<unsigned char>(c);
    return value;
}

}  // namespace toolkit
