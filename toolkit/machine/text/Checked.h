// Numbers read from files, and arithmetic with them. A result that does not fit is unknown. It never wraps around, and it
// fits a signed 64-bit number.
#pragma once

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

namespace toolkit {

// A number from 0 to kMaxCount, or nothing when it is unknown.
using Count = std::optional<std::uint64_t>;
inline constexpr std::uint64_t kMaxCount = std::numeric_limits<std::int64_t>::max();

inline Count counted(std::uint64_t number) {
    return number <= kMaxCount ? Count(number) : std::nullopt;
}

inline Count sum(Count left, Count right) {
    std::uint64_t result = 0;
    if (!left || !right || __builtin_add_overflow(*left, *right, &result)) return std::nullopt;
    return counted(result);
}

inline Count product(Count left, Count right) {
    std::uint64_t result = 0;
    if (!left || !right || __builtin_mul_overflow(*left, *right, &result)) return std::nullopt;
    return counted(result);
}

// Parses a text that consists of digits only, without sign or prefix.
inline Count readCount(std::string_view text, int base = 10) {
    std::uint64_t number = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number, base);
    return error == std::errc() && end == last ? counted(number) : std::nullopt;
}

// The decimal number at the front of a text: 12 of "12.5", "12 kB" and "12\n", but none of "12x" and "0x12".
inline Count readLeadingCount(std::string_view text) {
    return readCount(text.substr(0, text.find_first_of(" \t\n.")));
}

}  // namespace toolkit
