#pragma once

#include <span>
#include <vector>

#include "toolkit/quorvis/leaves/LeafCache.h"

namespace toolkit::quorvis {

// Finds out what all signatures need from the file system, so that one walk finds all paths and each file is searched
// once. Cheap leaves are looked up first: a signature that they decide needs nothing else.
class Planner {
  public:
    Planner(const Presets& presets, LeafCache& leaves, EvaluationContext& context)
        : presets_(presets), leaves_(leaves), context_(context) {}

    // Prepares the context for these signatures.
    void plan(std::span<const Signature> signatures);

  private:
    void announceNames(const Signature& signature);
    void add(const Signature& signature);
    // The result of a condition as far as it is known before the walk.
    Truth foresee(const Signature& signature, const Scope& scope, const Condition& condition);
    Truth foresee(const Leaf& leaf, const Scope& scope);

    void announceContent(const Query& query);

    const Presets& presets_;
    LeafCache& leaves_;
    EvaluationContext& context_;
    std::vector<GlobRequest> walks_;
};

}  // namespace toolkit::quorvis
