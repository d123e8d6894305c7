#include "kest/String.h"

#include <algorithm>

namespace kest {

namespace {

int sign(bool less, bool equal) {
    if (equal) return 0;
    return less ? -1 : 1;
}

// ASCII by hand: names in the scanners' files are ASCII, and towlower would follow the host's locale.
wchar_t lower(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character + (L'a' - L'A')) : character;
}

}  // namespace

String::String(const wchar_t* text) : text_(text == nullptr ? L"" : text) {}

String::String(std::wstring_view text) : text_(text) {}

int String::compareTo(const wchar_t* other) const {
    const int order = text_.compare(other == nullptr ? L"" : other);
    return sign(order < 0, order == 0);
}

int String::compareTo(const String& other, int ignoreCase) const {
    if (ignoreCase == 0) return compareTo(other.text());
    const auto lessThan = [](wchar_t a, wchar_t b) { return lower(a) < lower(b); };
    const auto& a = text_;
    const auto& b = other.text_;
    const bool less = std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), lessThan);
    const bool greater = std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(), lessThan);
    return sign(less, !less && !greater);
}

}  // namespace kest
