#include "toolkit/quorvis/Attribute.h"

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

}  // namespace

std::string_view nameOf(Attribute attribute) {
    return kNames.at(static_cast<std::size_t>(attribute));
}

std::optional<Attribute> attributeNamed(std::string_view name) {
    const auto* const found = std::ranges::lower_bound(kNames, name);
    if (found == kNames.end() || *found != name) return std::nullopt;
    return static_cast<Attribute>(found - kNames.begin());
}

}  // namespace toolkit::quorvis
