#include "toolkit/quorvis/Leaf.h"

#include <array>

#include "toolkit/quorvis/LeafTable.h"

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

std::string Query::key() const {
    std::string key(1, static_cast<char>(leaf_->kind));
    for (std::size_t i = 0; i < values_.size(); ++i) {
        key.push_back(static_cast<char>(leaf_->attributes[i].attribute));
        // The length tells where a value ends, whatever it holds.
        key.append(std::to_string(values_[i].size())).push_back(':');
        key.append(values_[i]);
    }
    for (const Capture& capture : leaf_->captures) {
        key.append(std::to_string(capture.group)).push_back('=');
        key.append(capture.name).push_back('\0');
    }
    return key;
}

LeafResult lookUp(const Query& query, Machine& machine) {
    return kLookUps.at(static_cast<std::size_t>(query.kind()))(query, machine);
}

}  // namespace toolkit::quorvis
