// Numbers that files tell, and what is reckoned with them. What does not fit is unknown: it never wraps round, and never
// turns negative for a reader whose numbers have a sign.
#pragma once

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

namespace toolkit {

// A number from 0 to kMaxCount; none when it is unknown.
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

// The number that the whole text is: digits and nothing else, no sign and no prefix.
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
