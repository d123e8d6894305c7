#pragma once

#include <span>
#include <vector>

#include "toolkit/quorvis/leaves/Leaves.h"

namespace toolkit::quorvis {

// Finds out what the signatures will ask of the file system, so that it is walked once and each file is searched once
// for all of them. Leaves that cost little are looked up meanwhile: what they have decided asks for nothing more.
class Planner {
  public:
    Planner(const Presets& presets, Leaves& leaves, Machine& machine)
        : presets_(presets), leaves_(leaves), machine_(machine) {}

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
    Leaves& leaves_;
    Machine& machine_;
    std::vector<GlobRequest> walks_;
};

// What a query of a Glob leaf asks of the walk.
GlobRequest globRequest(const Query& query);

}  // namespace toolkit::quorvis
