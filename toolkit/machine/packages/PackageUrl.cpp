#include "toolkit/machine/packages/PackageUrl.h"

#include <array>

#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

// The characters that are not escaped. isalnum is not used because it follows the locale.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (char c = 'a'; c <= 'z'; ++c) plain[static_cast<unsigned char>(c)] = true;
    for (char c = 'A'; c <= 'Z'; ++c) plain[static_cast<unsigned char>(c)] = true;
    for (char c = '0'; c <= '9'; ++c) plain[static_cast<unsigned char>(c)] = true;
    for (const char c : {'-', '.', '_', '~', ':'}) plain[static_cast<unsigned char>(c)] = true;
    return plain;
}();

void appendEscaped(std::string& url, std::string_view text) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && kPlain[static_cast<unsigned char>(text[plain])]) ++plain;
        url.append(text, 0, plain);
        if (plain == text.size()) return;
        const char c = text[plain];
        text.remove_prefix(plain + 1);
        const auto byte = static_cast<unsigned char>(c);
        url += '%';
        url += kDigits[byte >> 4];
        url += kDigits[byte & 15];
    }
}

}  // namespace

std::string packageUrl(std::string_view type, std::string_view nameSpace, std::string_view name,
                       std::string_view version, std::initializer_list<PackageQualifier> qualifiers) {
    std::string url;
    url.reserve(96);  // most are shorter
    url += "pkg:";
    url += type;
    // A namespace may have several segments.
    while (!nameSpace.empty()) {
        url += '/';
        appendEscaped(url, takeField(nameSpace, '/'));
    }
    url += '/';
    appendEscaped(url, name);
    if (!version.empty()) {
        url += '@';
        appendEscaped(url, version);
    }
    char separator = '?';
    for (const PackageQualifier& qualifier : qualifiers) {
        if (qualifier.value.empty()) continue;
        url += separator;
        url += qualifier.name;
        url += '=';
        appendEscaped(url, qualifier.value);
        separator = '&';
    }
    return url;
}

}  // namespace toolkit
