#include "cli/sbom/DocumentValues.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>

#include "cli/sbom/BillWriter.h"
#include "cli/scan/PackageUrl.h"
#include "cli/system/Failure.h"

namespace zavcli {

namespace {

// The last moment of the year 9999, beyond which ISO 8601 has no form that everybody reads.
constexpr long long kMaxTime = 253402300799;

bool isGraphic(char character) {
    return character > ' ' && character <= '~';
}

bool isAllowedInAddress(char character) {
    return isGraphic(character) && std::string_view("\"<>\\^`{|}").find(character) == std::string_view::npos;
}

}  // namespace

bool isCpe23(std::string_view text) {
    constexpr std::size_t kParts = 13;
    if (!text.starts_with("cpe:2.3:") || !std::all_of(text.begin(), text.end(), isGraphic)) return false;
    std::size_t parts = 1;
    bool isEmpty = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ':') {
            isEmpty = isEmpty || text[i - 1] == ':' || i + 1 == text.size();
            ++parts;
        } else if (text[i] == '\\') {
            ++i;
        }
    }
    const char type = text.size() > 8 ? text[8] : ' ';
    return parts == kParts && !isEmpty && (type == 'a' || type == 'o' || type == 'h');
}

bool isCleanPackageUrl(std::string_view text) {
    return parsePackageUrl(text) && std::all_of(text.begin(), text.end(), isAllowedInAddress);
}

bool isWebAddress(std::string_view text) {
    const bool known = text.starts_with("http://") || text.starts_with("https://");
    return known && std::all_of(text.begin(), text.end(), isAllowedInAddress);
}

std::string nameWithoutMail(std::string_view text) {
    const std::size_t mail = text.find('<');
    std::string_view name = mail == std::string_view::npos || mail == 0 ? text : text.substr(0, mail);
    while (name.ends_with(' ')) name.remove_suffix(1);
    return std::string(name);
}

std::string isoTime(std::time_t time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(time));
}

DocumentTime documentTime() {
    const char* const text = std::getenv("SOURCE_DATE_EPOCH");
    if (text == nullptr || *text == '\0') return {std::time(nullptr), false};
    const std::string_view digits = text;
    long long seconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    if (error != std::errc() || end != digits.data() + digits.size() || seconds < 0 || seconds > kMaxTime)
        throw Failure(
            kExitBadUsage,
            fmt::format("SOURCE_DATE_EPOCH is '{}', which is not a number of seconds since 1970", text));
    return {static_cast<std::time_t>(seconds), true};
}

}  // namespace zavcli
