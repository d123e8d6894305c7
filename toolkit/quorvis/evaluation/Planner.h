#pragma once

#include <span>
#include <vector>

#include "toolkit/quorvis/leaves/LeafCache.h"

namespace toolkit::quorvis {

// Finds out what the signatures will ask of the file system, so that it is walked once and each file is searched once
// for all of them. Leaves that cost little are looked up meanwhile: what they have decided asks for nothing more.
class Planner {
  public:
    Planner(const Presets& presets, LeafCache& leaves, EvaluationContext& context)
        : presets_(presets), leaves_(leaves), context_(context) {}

    // Tells the machine what these signatures will ask.
    void plan(std::span<const Signature> signatures);

  private:
    void announceNames(const Signature& signature);
    void add(const Signature& signature);
    // What is known of a condition before the walk.
    Truth foresee(const Signature& signature, const Scope& scope, const Condition& condition);
    Truth foresee(const Leaf& leaf, const Scope& scope);

    void announceContent(const Query& query);

    const Presets& presets_;
    LeafCache& leaves_;
    EvaluationContext& context_;
    std::vector<GlobRequest> walks_;
};

}  // namespace toolkit::quorvis
