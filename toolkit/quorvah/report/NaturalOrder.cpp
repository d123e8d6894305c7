#include "toolkit/quorvah/report/NaturalOrder.h"

#include <algorithm>
#include <cstring>

namespace toolkit::quorvah {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Removes the digits at the start of `text` and returns them without leading zeros.
std::string_view takeDigits(std::string_view& text) {
    std::size_t zeros = 0;
    while (zeros < text.size() && text[zeros] == '0') ++zeros;
    std::size_t end = zeros;
    while (end < text.size() && isDigit(text[end])) ++end;
    const std::string_view digits = text.substr(zeros, end - zeros);
    text.remove_prefix(end);
    return digits;
}

std::size_t commonPrefixLength(std::string_view left, std::string_view right) {
    constexpr std::size_t kBlock = 8;  // characters compared at once
    const std::size_t limit = std::min(left.size(), right.size());
    std::size_t length = 0;
    while (limit - length >= kBlock && std::memcmp(&left[length], &right[length], kBlock) == 0)
        length += kBlock;
    while (length < limit && left[length] == right[length]) ++length;
    return length;
}

}  // namespace

bool naturallyBefore(std::string_view left, std::string_view right) {
    // Skips the common prefix, which most keys of a group have, back to the start of a number that it cuts.
    std::size_t skipped = commonPrefixLength(left, right);
    while (skipped > 0 && isDigit(left[skipped - 1])) --skipped;
    std::string_view l = left.substr(skipped);
    std::string_view r = right.substr(skipped);
    while (!l.empty() && !r.empty()) {
        if (isDigit(l.front()) && isDigit(r.front())) {
            const std::string_view a = takeDigits(l);
            const std::string_view b = takeDigits(r);
            if (a.size() != b.size()) return a.size() < b.size();
            if (a != b) return a < b;
            continue;
        }
        if (l.front() != r.front()) {
            return static_cast<unsigned char>(l.front()) < static_cast<unsigned char>(r.front());
        }
        l.remove_prefix(1);
        r.remove_prefix(1);
    }
    if (l.empty() != r.empty()) return l.empty();
    return left < right;
}

}  // namespace toolkit::quorvah
