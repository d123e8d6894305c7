#include "toolkit/quorvis/Leaf.h"

#include <array>

namespace toolkit::quorvis {

namespace {

struct LeafRow {
    std::string_view name;
    LeafResult (*lookUp)(const Query&, Machine&);
};

// In the order of LeafKind.
constexpr std::array<LeafRow, 11> kLeaves = {{
    {"Package", lookUpPackage},
    {"File", lookUpFile},
    {"Glob", lookUpGlob},
    {"Content", lookUpContent},
    {"Property", lookUpProperty},
    {"Xml", lookUpXml},
    {"Process", lookUpProcess},
    {"Elf", lookUpElf},
    {"FileVersion", lookUpFileVersion},
    {"SwidTag", lookUpSwidTag},
    {"Compare", lookUpCompare},
}};

const LeafRow& rowOf(LeafKind kind) {
    return kLeaves[static_cast<std::size_t>(kind)];
}

}  // namespace

std::string_view nameOf(LeafKind kind) {
    return rowOf(kind).name;
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
    return rowOf(query.kind()).lookUp(query, machine);
}

}  // namespace toolkit::quorvis
