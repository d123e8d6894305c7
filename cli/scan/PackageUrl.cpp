#include "cli/scan/PackageUrl.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::string_view kScheme = "pkg:";

std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            result += static_cast<char>(byte);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

// Removes the part from the last separator on, and returns it without the separator.
std::string_view takeAfterLast(std::string_view& text, char separator) {
    const std::size_t at = text.rfind(separator);
    if (at == std::string_view::npos) return {};
    const std::string_view part = text.substr(at + 1);
    text = text.substr(0, at);
    return part;
}

std::vector<Field> parseQualifiers(std::string_view text) {
    std::vector<Field> qualifiers;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('&'), text.size());
        const std::string_view pair = text.substr(0, end);
        const std::size_t equals = pair.find('=');
        if (equals != std::string_view::npos && equals > 0)
            qualifiers.push_back({lowerCase(pair.substr(0, equals)), decoded(pair.substr(equals + 1))});
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return qualifiers;
}

}  // namespace

std::optional<PackageUrl> parsePackageUrl(std::string_view text) {
    if (!text.starts_with(kScheme)) return std::nullopt;
    text.remove_prefix(kScheme.size());
    PackageUrl url;
    url.subpath = decoded(takeAfterLast(text, '#'));
    url.qualifiers = parseQualifiers(takeAfterLast(text, '?'));
    while (text.starts_with('/')) text.remove_prefix(1);
    const std::size_t typeEnd = text.find('/');
    if (typeEnd == std::string_view::npos || typeEnd == 0) return std::nullopt;
    url.type = lowerCase(text.substr(0, typeEnd));
    text.remove_prefix(typeEnd + 1);
    // An '@' before the last '/' belongs to a namespace, such as that of npm.
    const std::size_t at = text.rfind('@');
    const std::size_t slash = text.rfind('/');
    if (at != std::string_view::npos && at > 0 && (slash == std::string_view::npos || at > slash))
        url.version = decoded(takeAfterLast(text, '@'));
    const std::size_t nameBegin = text.rfind('/');
    url.name = decoded(nameBegin == std::string_view::npos ? text : text.substr(nameBegin + 1));
    if (nameBegin != std::string_view::npos) url.nameSpace = decoded(text.substr(0, nameBegin));
    if (url.name.empty()) return std::nullopt;
    return url;
}

bool isLanguageType(std::string_view type) {
    static constexpr std::array<std::string_view, 18> kTypes{
        "cargo",   "cocoapods", "composer", "conan", "conda", "cpan",  "cran", "gem", "golang",
        "hackage", "hex",       "luarocks", "maven", "npm",   "nuget", "opam", "pub", "pypi"};
    return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

}  // namespace zavcli
