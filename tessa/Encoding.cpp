#include "tessa/Encoding.h"

#include <algorithm>
#include <span>

#include "kest/Ascii.h"
#include "tessa/Utf8.h"

namespace tessa {

namespace {

using namespace std::string_view_literals;

bool isOneOf(std::string_view name, std::span<const std::string_view> names) {
    return std::any_of(names.begin(), names.end(),
                       [name](std::string_view each) { return kest::equalsIgnoringCase(each, name); });
}

using EncodingNames = std::array<std::string_view, 4>;
constexpr EncodingNames kUtf8 = {"UTF-8", "UTF8"};
constexpr EncodingNames kUtf16Big = {"UTF-16", "UTF-16BE", "UCS-2", "ISO-10646-UCS-2"};
constexpr EncodingNames kUtf16Little = {"UTF-16", "UTF-16LE", "UCS-2", "ISO-10646-UCS-2"};
constexpr EncodingNames kUtf32Big = {"UTF-32", "UTF-32BE", "UCS-4", "ISO-10646-UCS-4"};
constexpr EncodingNames kUtf32Little = {"UTF-32", "UTF-32LE", "UCS-4", "ISO-10646-UCS-4"};

// The first matching row applies. A document without a byte order mark can only begin with "<".
const ByteLayout kForms[] = {
    {"\xEF\xBB\xBF"sv, kUtf8, nullptr, 1, false, true},
    {"\0\0\xFE\xFF"sv, kUtf32Big, "UTF-32BE", 4, true, true},
    {"\xFF\xFE\0\0"sv, kUtf32Little, "UTF-32LE", 4, false, true},
    {"\xFE\xFF"sv, kUtf16Big, "UTF-16BE", 2, true, true},
    {"\xFF\xFE"sv, kUtf16Little, "UTF-16LE", 2, false, true},
    {"\0\0\0<"sv, kUtf32Big, "UTF-32BE", 4, true, false},
    {"<\0\0\0"sv, kUtf32Little, "UTF-32LE", 4, false, false},
    {"\0<"sv, kUtf16Big, "UTF-16BE", 2, true, false},
    {"<\0"sv, kUtf16Little, "UTF-16LE", 2, false, false},
    {""sv, {}, nullptr, 1, false, false},
};

}  // namespace

const ByteLayout& ByteLayout::of(std::string_view begin) {
    return *std::find_if(std::begin(kForms), std::end(kForms),
                         [begin](const ByteLayout& form) { return begin.starts_with(form.begin); });
}

bool ByteLayout::fits(std::string_view encoding) const {
    if (!names.front().empty()) return isOneOf(encoding, names);
    return std::all_of(std::begin(kForms), std::end(kForms),
                       [encoding](const ByteLayout& form) { return form.unit == 1 || !form.fits(encoding); });
}

bool ByteLayout::readByExpat(std::string_view encoding) {
    static constexpr std::string_view names[] = {"UTF-8",    "UTF-16",     "UTF-16BE",
                                                 "UTF-16LE", "ISO-8859-1", "US-ASCII"};
    return isOneOf(encoding, names);
}

// Handles code points up to U+FFFF only. The result is searched for names, which contain no others.
std::string ByteLayout::utf8Of(std::string_view bytes, bool isLatin1) const {
    if (unit == 1 && !isLatin1) return std::string(bytes);
    std::string text;
    const auto width = static_cast<std::size_t>(unit);
    for (std::size_t i = 0; i + width <= bytes.size(); i += width) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto last = static_cast<unsigned char>(bytes[i + width - 1]);
        const wchar_t code = width == 1 ? first : bigEndian ? first << 8 | last : last << 8 | first;
        char encoded[4];
        text.append(encoded, narrowUtf8(code, encoded));
    }
    return text;
}

}  // namespace tessa
