// Signature files: the result is either valid signatures or problems with their places, never both.
#include <algorithm>
#include <cstdlib>

#include "fuzz/MemoryFile.h"
#include "toolkit/quorvis/language/SignatureReader.h"

namespace {

namespace quorvis = toolkit::quorvis;

void must(bool holds) {
    if (!holds) std::abort();
}

void checkCondition(const quorvis::Condition& condition, const quorvis::Signature& signature) {
    using Kind = quorvis::Condition::Kind;
    if (condition.kind == Kind::Leaf) {
        must(condition.leaf < signature.leaves.size());
        return;
    }
    must(!condition.children.empty());
    if (condition.kind == Kind::Not || condition.kind == Kind::Optional) must(condition.children.size() == 1);
    for (const quorvis::Condition& child : condition.children) checkCondition(child, signature);
}

void checkSignature(const quorvis::Signature& signature) {
    must(!signature.guid.empty() && signature.guid.size() <= 128);
    must(!signature.detections.empty() && signature.detections.back().endLeaf == signature.leaves.size());
    for (const auto& detection : signature.detections) {
        must(!detection.each.empty() || detection.match.has_value());
        for (const std::size_t leaf : detection.each) must(leaf < signature.leaves.size());
        if (detection.match) checkCondition(*detection.match, signature);
    }
    for (const quorvis::Leaf& leaf : signature.leaves) {
        must(std::ranges::is_sorted(leaf.attributes, {}, &quorvis::LeafAttribute::attribute));
        must(leaf.min <= leaf.max);
    }
}

quorvis::SignatureFile readChecked(const std::string& path, bool skipInvalid) {
    quorvis::Settings settings;
    settings.evaluation.skipInvalid = skipInvalid;
    quorvis::SignatureFile file = quorvis::readSignatureFile(path, settings);
    must(file.problems.empty() || file.signatures.empty());
    for (const std::string& problem : file.problems) must(problem.starts_with(path + ":"));
    for (const quorvis::Signature& signature : file.signatures) checkSignature(signature);
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile file(data, size);
    const quorvis::SignatureFile strict = readChecked(file.path(), false);
    const quorvis::SignatureFile tolerant = readChecked(file.path(), true);
    if (strict.problems.empty()) must(tolerant.signatures.size() == strict.signatures.size());
    return 0;
}
