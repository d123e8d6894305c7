#include "toolkit/quorvis/language/Attribute.h"

#include <algorithm>
#include <array>

namespace toolkit::quorvis {

namespace {

// In the order of the enumeration, which is that of their bytes.
constexpr std::array<std::string_view, 43> kNames = {
    "above",    "arch",     "argsRegex", "atLeast", "atMost", "below", "buildId",   "compare", "corpus",
    "equals",   "exclude",  "exe",       "flags",   "format", "key",   "kind",      "left",    "machine",
    "maxBytes", "maxDepth", "maxSize",   "minSize", "mode",   "name",  "nameRegex", "needed",  "owner",
    "patch",    "path",     "pattern",   "regex",   "regid",  "role",  "scheme",    "section", "select",
    "sha256",   "size",     "soname",    "source",  "tagId",  "type",  "user",
};
static_assert(std::ranges::is_sorted(kNames));
static_assert(kNames[static_cast<std::size_t>(Attribute::Above)] == "above");
static_assert(kNames[static_cast<std::size_t>(Attribute::MaxBytes)] == "maxBytes");
static_assert(kNames[static_cast<std::size_t>(Attribute::User)] == "user");

// Where the names with each letter in front begin, from a to behind z.
constexpr auto kStarts = [] {
    std::array<std::uint8_t, 27> starts{};
    for (const std::string_view name : kNames) {
        const auto letter = static_cast<std::size_t>(name.front() - 'a');
        for (std::size_t later = letter + 1; later < starts.size(); ++later) ++starts[later];
    }
    return starts;
}();

}  // namespace

std::string_view nameOf(Attribute attribute) {
    return kNames.at(static_cast<std::size_t>(attribute));
}

std::optional<Attribute> attributeNamed(std::string_view name) {
    if (name.empty() || name.front() < 'a' || name.front() > 'z') return std::nullopt;
    const auto letter = static_cast<std::size_t>(name.front() - 'a');
    for (std::size_t i = kStarts[letter]; i < kStarts[letter + 1]; ++i) {
        if (kNames[i] == name) return static_cast<Attribute>(i);
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvis
