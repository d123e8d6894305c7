// What "${name}" means.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "toolkit/quorvis/language/Item.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Configuration.h"

namespace toolkit::quorvis {

// The preset variables of the configuration, and those of the scanner itself ("quorvis.root").
class Presets {
  public:
    explicit Presets(std::vector<PresetValue> values);

    // The value for this signature, else the one for all. Identifiers are the same in any case.
    const std::string* find(std::string_view name, std::string_view guid) const;

  private:
    std::vector<PresetValue> values_;
    std::unordered_multimap<std::string_view, const PresetValue*> byName_;
};

// The variables while one signature is evaluated.
class Scope {
  public:
    Scope(const Presets& presets, const Signature& signature) : presets_(presets), signature_(signature) {}

    // "${id.field}" is from now on a value of this item, which outlives the scope.
    void bind(std::string_view id, const Item& item) { bound_.emplace_back(id, &item); }

    // What was bound behind a mark is forgotten.
    std::size_t mark() const { return bound_.size(); }
    void rewind(std::size_t mark) { bound_.resize(mark); }

    // None when nothing has this name.
    std::optional<std::string_view> find(std::string_view name) const;

    // Whether the name is that of a value of one of the signature's own leaves, be it bound or not.
    bool isOfLeaf(std::string_view name) const;

  private:
    const Presets& presets_;
    const Signature& signature_;
    std::vector<std::pair<std::string_view, const Item*>> bound_;
};

// How values are written where they are inserted, so that they mean nothing but themselves.
enum class Quoting : std::uint8_t { None, Regex, Pattern };

// The text with its variables replaced. None, with the name of the variable in `missing`, when one has no value.
std::optional<std::string> expand(const Template& text, const Scope& scope, Quoting quoting,
                                  std::string_view& missing);

}  // namespace toolkit::quorvis
