#pragma once

#include <cstdint>
#include <string>

namespace toolkit {

// The last `count` hexadecimal digits of a number, in lower case, with leading zeros.
inline std::string hexDigits(std::uint64_t number, int count) {
    std::string digits;
    for (int shift = 4 * (count - 1); shift >= 0; shift -= 4)
        digits += "0123456789abcdef"[number >> shift & 0xFU];
    return digits;
}

}  // namespace toolkit
