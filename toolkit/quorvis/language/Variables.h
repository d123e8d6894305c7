// The variables of signatures: the items that give them values, their scope, and checks of their names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// One value of an item. The name is a literal or a text of the signature.
struct Field {
    std::string_view name;
    std::string value;
};

// One thing that a leaf found: a package, a file, a match. "${id.field}" stands for one of its values.
struct Item {
    std::vector<Field> fields;
    std::string source;     // the file that proves it: a package database, the path of a found file
    bool linkFree = false;  // whether `source` is known to be a path without links

    void set(std::string_view name, std::string value) { fields.push_back({name, std::move(value)}); }
    // Null when the item has no such value.
    const std::string* find(std::string_view name) const {
        for (const Field& field : fields) {
            if (field.name == name) return &field.value;
        }
        return nullptr;
    }
};

// The variables of the configuration and of the scanner itself ("quorvis.root").
class Presets {
  public:
    explicit Presets(std::vector<PresetValue> values);

    // The value for this signature, or else the value for all. Null if there is none. The guid is case-insensitive.
    const std::string* find(std::string_view name, std::string_view guid) const;

  private:
    std::vector<PresetValue> values_;
    std::unordered_multimap<std::string_view, const PresetValue*> byName_;
};

// The variables during the evaluation of one signature.
class Scope {
  public:
    Scope(const Presets& presets, const Signature& signature) : presets_(presets), signature_(signature) {}

    // Makes the values of the item available as "${id.field}". REQUIRES: the item outlives this object.
    void bind(std::string_view id, const Item& item) { bound_.emplace_back(id, &item); }

    // rewind() removes all bindings since mark().
    std::size_t mark() const { return bound_.size(); }
    void rewind(std::size_t mark) { bound_.resize(mark); }

    // None if the variable has no value.
    std::optional<std::string_view> find(std::string_view name) const;

    // Whether the name belongs to a leaf of the signature, bound or not.
    bool isOfLeaf(std::string_view name) const;

  private:
    const Presets& presets_;
    const Signature& signature_;
    std::vector<std::pair<std::string_view, const Item*>> bound_;
};

// How inserted values are escaped, so that they match only themselves.
enum class Quoting : std::uint8_t { None, Regex, Pattern };

// Replaces the variables of a text. None if a variable has no value; `missing` is then its name.
std::optional<std::string> expand(const Template& text, const Scope& scope, Quoting quoting,
                                  std::string_view& missing);

// Reports leaves of a Detection that use the same identifier although both may be bound at the same time, and warns of
// variables that nothing in the Detection sets. `element` is the element of the Detection.
void checkIdentifiers(const Signature& signature, const Detection& detection, const Element& element,
                      Diagnostics& diagnostics);

// Marks the leaves of a Detection that must tell which package owns what they found, because a text uses it.
void noteOwners(Signature& signature, const Detection& detection);

}  // namespace toolkit::quorvis
