// How a leaf is looked up on the machine.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

class Machine;

enum class Truth : std::uint8_t { False, True, Unknown };

// One value of an item. The name is a literal or stands in the signature.
struct Field {
    std::string_view name;
    std::string value;
};

// One thing that a leaf found: a package, a file, a match.
struct Item {
    std::vector<Field> fields;
    std::string source;  // the file that tells of it: the database of a package, the path of a file

    void set(std::string_view name, std::string value) { fields.push_back({name, std::move(value)}); }
    // Null when the item has no such value.
    const std::string* find(std::string_view name) const {
        for (const Field& field : fields) {
            if (field.name == name) return &field.value;
        }
        return nullptr;
    }
};

// What came of looking a leaf up.
struct LeafResult {
    std::vector<Item> items;  // those that pass, in the order that the language defines
    // Whether something that could hold an item could not be examined; an event tells why.
    bool incomplete = false;
    std::vector<Event> events;

    // Notes an event that leaves the leaf incomplete.
    void fail(EventCode code, std::string path, std::string text) {
        incomplete = true;
        events.push_back({code, std::move(path), std::move(text), {}, {}});
    }
};

// A leaf with its variables replaced by their values.
class Query {
  public:
    // Of a leaf that has no variables.
    explicit Query(const Leaf& leaf) : leaf_(&leaf) {}
    // `values` are those of the leaf's attributes, in order.
    Query(const Leaf& leaf, std::vector<std::string> values) : leaf_(&leaf), values_(std::move(values)) {}

    const Leaf& leaf() const { return *leaf_; }
    LeafKind kind() const { return leaf_->kind; }
    const std::vector<Capture>& captures() const { return leaf_->captures; }

    bool has(Attribute attribute) const { return find(attribute) < leaf_->attributes.size(); }
    // The value of an attribute; empty when it is not given.
    std::string_view get(Attribute attribute) const {
        const std::size_t index = find(attribute);
        return index < leaf_->attributes.size() ? valueAt(index) : std::string_view();
    }

    // Whether both ask the same.
    bool operator==(const Query& other) const;
    std::size_t hash() const;
    // Bytes of the values that are not the leaf's own.
    std::size_t size() const {
        std::size_t size = 0;
        for (const std::string& value : values_) size += value.size();
        return size;
    }

  private:
    // One behind the last when it is not given.
    std::size_t find(Attribute attribute) const {
        std::size_t index = 0;
        while (index < leaf_->attributes.size() && leaf_->attributes[index].attribute != attribute) ++index;
        return index;
    }
    std::string_view valueAt(std::size_t index) const {
        return values_.empty() ? leaf_->attributes[index].value.source() : std::string_view(values_[index]);
    }

    const Leaf* leaf_;
    std::vector<std::string> values_;  // none when they are those of the leaf itself
};

// Looks a leaf up. What cannot be read or understood is an event. A value that a variable brought and that is no number,
// version or expression fails likewise. Thrown are std::bad_alloc, and OverContract by those that cost too much.
LeafResult lookUpPackage(const Query& query, Machine& machine);
LeafResult lookUpFile(const Query& query, Machine& machine);
LeafResult lookUpGlob(const Query& query, Machine& machine);
LeafResult lookUpContent(const Query& query, Machine& machine);
LeafResult lookUpProperty(const Query& query, Machine& machine);
LeafResult lookUpXml(const Query& query, Machine& machine);
LeafResult lookUpProcess(const Query& query, Machine& machine);
LeafResult lookUpElf(const Query& query, Machine& machine);
LeafResult lookUpFileVersion(const Query& query, Machine& machine);
LeafResult lookUpSwidTag(const Query& query, Machine& machine);
LeafResult lookUpCompare(const Query& query, Machine& machine);

// The same; what would be thrown leaves the leaf unknown.
LeafResult lookUp(const Query& query, Machine& machine);

}  // namespace toolkit::quorvis
