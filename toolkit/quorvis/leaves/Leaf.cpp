#include "toolkit/quorvis/leaves/Leaf.h"

#include <array>
#include <functional>
#include <new>

#include "toolkit/quorvis/language/LeafTable.h"
#include "toolkit/quorvis/leaves/Machine.h"

namespace toolkit::quorvis {

namespace {

using LookUp = LeafResult (*)(const Query&, Machine&);

// In the order of LeafKind.
constexpr std::array<LookUp, 11> kLookUps = {
    lookUpPackage, lookUpFile, lookUpGlob,        lookUpContent, lookUpProperty, lookUpXml,
    lookUpProcess, lookUpElf,  lookUpFileVersion, lookUpSwidTag, lookUpCompare,
};

}  // namespace

std::string_view nameOf(LeafKind kind) {
    return leafRules(kind).name;
}

bool Query::operator==(const Query& other) const {
    const std::size_t count = leaf_->attributes.size();
    if (kind() != other.kind() || count != other.leaf_->attributes.size()) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const bool sameAttribute = leaf_->attributes[i].attribute == other.leaf_->attributes[i].attribute;
        if (!sameAttribute || valueAt(i) != other.valueAt(i)) return false;
    }
    return captures() == other.captures();
}

std::size_t Query::hash() const {
    auto hash = static_cast<std::size_t>(kind());
    for (std::size_t i = 0; i < leaf_->attributes.size(); ++i)
        hash = hash * 31 + std::hash<std::string_view>()(valueAt(i));
    return hash;
}

LeafResult lookUp(const Query& query, Machine& machine) {
    LeafResult unknown;
    const std::string path(query.get(Attribute::Path));
    try {
        const Effort::OfLeaf effort(machine.effort(), query.kind());
        return kLookUps.at(static_cast<std::size_t>(query.kind()))(query, machine);
    } catch (const OverContract& over) {
        unknown.fail(over.code, path, over.text);
    } catch (const std::bad_alloc&) {
        machine.forget();
        unknown.fail(EventCode::LimitMemory, path, "this takes more memory than is allowed");
    }
    return unknown;
}

}  // namespace toolkit::quorvis
