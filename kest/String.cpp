#include "kest/String.h"

#include <algorithm>

#include "kest/Ascii.h"

namespace kest {

namespace {

int sign(int order) {
    return (order > 0) - (order < 0);
}

}  // namespace

String::String(const wchar_t* text) : text_(text == nullptr ? L"" : text) {}

String::String(std::wstring_view text) : text_(text) {}

int String::compareTo(const wchar_t* other) const {
    return sign(text_.compare(other == nullptr ? L"" : other));
}

int String::compareTo(const String& other, int ignoreCase) const {
    if (ignoreCase == 0) return sign(text_.compare(other.text_));
    const auto [a, b] =
        std::mismatch(text_.begin(), text_.end(), other.text_.begin(), other.text_.end(),
                      [](wchar_t mine, wchar_t theirs) { return asciiLower(mine) == asciiLower(theirs); });
    if (a == text_.end()) return b == other.text_.end() ? 0 : -1;
    if (b == other.text_.end()) return 1;
    return asciiLower(*a) < asciiLower(*b) ? -1 : 1;
}

}  // namespace kest
