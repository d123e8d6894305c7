// What a leaf asks, what its lookup finds, one lookup function for each kind of leaf, and the steps that they share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/formats/RandomAccessFile.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/language/Variables.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

enum class Truth : std::uint8_t { False, True, Unknown };

// What the lookup of a leaf found.
struct LeafResult {
    std::vector<Item> items;  // those that pass all tests, in the order that the language defines
    // Whether something that may hold items could not be examined. An event says why.
    bool incomplete = false;
    std::vector<Event> events;

    // Adds an event that leaves the result incomplete.
    void fail(EventCode code, std::string path, std::string text) {
        incomplete = true;
        events.push_back({code, std::move(path), std::move(text), {}, {}});
    }
};

// A leaf with its variables replaced by their values.
class Query {
  public:
    // Of a leaf without variables.
    explicit Query(const Leaf& leaf) : leaf_(&leaf) {}
    // `values` are those of the leaf's attributes, in order.
    Query(const Leaf& leaf, std::vector<std::string> values) : leaf_(&leaf), values_(std::move(values)) {}

    const Leaf& leaf() const { return *leaf_; }
    LeafKind kind() const { return leaf_->kind; }
    const std::vector<Capture>& captures() const { return leaf_->captures; }
    const std::vector<NamedKey>& keys() const { return leaf_->keys; }

    bool has(Attribute attribute) const { return find(attribute) < leaf_->attributes.size(); }
    // The value of an attribute; empty when it is not given.
    std::string_view get(Attribute attribute) const {
        const std::size_t index = find(attribute);
        return index < leaf_->attributes.size() ? valueAt(index) : std::string_view();
    }

    // Whether both have the same kind, attributes, values, captures and keys.
    bool operator==(const Query& other) const;
    std::size_t hash() const;
    // Bytes of the values that are not the leaf's own.
    std::size_t size() const {
        std::size_t size = 0;
        for (const std::string& value : values_) size += value.size();
        return size;
    }

  private:
    // The index of an attribute; the number of attributes when it is not given.
    std::size_t find(Attribute attribute) const {
        std::size_t index = 0;
        while (index < leaf_->attributes.size() && leaf_->attributes[index].attribute != attribute) ++index;
        return index;
    }
    std::string_view valueAt(std::size_t index) const {
        return values_.empty() ? leaf_->attributes[index].value.source() : std::string_view(values_[index]);
    }

    const Leaf* leaf_;
    std::vector<std::string> values_;  // empty when they are those of the leaf itself
};

// Look a leaf up. What cannot be read or understood becomes an event, and so does a value of a variable that is not a
// valid number, version or expression. They throw std::bad_alloc, and BudgetExceeded when the lookup costs too much.
LeafResult lookUpPackage(const Query& query, EvaluationContext& context);
LeafResult lookUpFile(const Query& query, EvaluationContext& context);
LeafResult lookUpGlob(const Query& query, EvaluationContext& context);
LeafResult lookUpContent(const Query& query, EvaluationContext& context);
LeafResult lookUpProperty(const Query& query, EvaluationContext& context);
LeafResult lookUpXml(const Query& query, EvaluationContext& context);
LeafResult lookUpProcess(const Query& query, EvaluationContext& context);
LeafResult lookUpElf(const Query& query, EvaluationContext& context);
LeafResult lookUpFileVersion(const Query& query, EvaluationContext& context);
LeafResult lookUpSwidTag(const Query& query, EvaluationContext& context);
LeafResult lookUpComponent(const Query& query, EvaluationContext& context);
LeafResult lookUpBytes(const Query& query, EvaluationContext& context);
LeafResult lookUpCompare(const Query& query, EvaluationContext& context);

// Adds what the query captures of the values of the items. Removes the items with a value that does not match.
void captureValues(const Query& query, EvaluationContext& context, LeafResult& result);

// Looks up a leaf of any kind within its limits. One that would throw leaves the result incomplete instead.
LeafResult lookUp(const Query& query, EvaluationContext& context);

// What the lookup of a leaf of this kind may cost.
LookupLimits limitsOf(LeafKind kind, const Settings& settings);

// Adds an item to the result. Throws BudgetExceeded when the result has too many bytes.
void keepItem(LookupBudget& budget, LeafResult& result, Item item);

// The walk that a Glob leaf needs.
GlobRequest globRequestOf(const Query& query);

// These read the file that a leaf names. What keeps it from being read becomes an event of the result.

// The content of the file at `path`. Null when it does not exist or cannot be read.
std::shared_ptr<const std::string> contentOf(const std::string& path, EvaluationContext& context,
                                             LeafResult& result, KeySearch search = KeySearch::Whole);
// At most its first `limit` bytes.
std::shared_ptr<const std::string> startOf(const std::string& path, std::uint64_t limit,
                                           EvaluationContext& context, LeafResult& result);

// The file at `path`, for leaves that need some parts of it. None when it does not exist or cannot be read. What is
// read is charged to the budget of the context, which must outlive the file.
std::optional<RandomAccessFile> openFile(const std::string& path, EvaluationContext& context,
                                         LeafResult& result, KeySearch search = KeySearch::Whole);

}  // namespace toolkit::quorvis
