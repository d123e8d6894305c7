#include "toolkit/quorvis/language/Variables.h"

#include <algorithm>

#include "kest/Ascii.h"
#include "toolkit/quorvis/regex/Regex.h"
#include "toolkit/quorvis/walk/GlobPattern.h"

namespace toolkit::quorvis {

namespace {

std::string quoted(std::string_view value, Quoting quoting) {
    if (quoting == Quoting::Regex) return quotedForRegex(value);
    if (quoting == Quoting::Pattern) return quotedForPattern(value);
    return std::string(value);
}

}  // namespace

Presets::Presets(std::vector<PresetValue> values) : values_(std::move(values)) {
    for (const PresetValue& value : values_) byName_.emplace(value.name, &value);
}

const std::string* Presets::find(std::string_view name, std::string_view guid) const {
    const std::string* forAll = nullptr;
    const auto [first, last] = byName_.equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        const PresetValue& value = *entry->second;
        if (kest::equalsIgnoringCase(value.guid, guid)) return &value.value;
        if (value.guid.empty()) forAll = &value.value;
    }
    return forAll;
}

std::optional<std::string_view> Scope::find(std::string_view name) const {
    const std::size_t dot = name.rfind('.');
    if (dot != std::string_view::npos) {
        const std::string_view id = name.substr(0, dot);
        for (auto bound = bound_.rbegin(); bound != bound_.rend(); ++bound) {
            if (bound->first != id) continue;
            const std::string* const value = bound->second->find(name.substr(dot + 1));
            if (value != nullptr) return *value;
        }
    }
    const std::string* const preset = presets_.find(name, signature_.guid);
    if (preset != nullptr) return *preset;
    for (const Preset& declared : signature_.presets) {
        if (declared.name == name) return declared.fallback;
    }
    return std::nullopt;
}

bool Scope::isOfLeaf(std::string_view name) const {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return false;
    const std::string_view id = name.substr(0, dot);
    return std::any_of(signature_.leaves.begin(), signature_.leaves.end(),
                       [id](const Leaf& leaf) { return leaf.id == id; });
}

std::optional<std::string> expand(const Template& text, const Scope& scope, Quoting quoting,
                                  std::string_view& missing) {
    if (text.constant()) return std::string(text.source());
    std::string expanded;
    for (const Template::Piece& piece : text.pieces()) {
        if (!piece.variable) {
            expanded.append(piece.text);
            continue;
        }
        const std::optional<std::string_view> value = scope.find(piece.text);
        if (!value) {
            missing = piece.text;
            return std::nullopt;
        }
        expanded.append(quoted(*value, quoting));
    }
    return expanded;
}

}  // namespace toolkit::quorvis
