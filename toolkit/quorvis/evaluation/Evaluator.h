#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "toolkit/quorvis/leaves/LeafCache.h"
#include "toolkit/quorvis/report/EvaluationSink.h"

namespace toolkit::quorvis {

// Decides which signatures match.
class Evaluator {
  public:
    // REQUIRES: all outlive the evaluator.
    Evaluator(const Presets& presets, EvaluationContext& context, EvaluationSink& sink)
        : presets_(presets), context_(context), sink_(sink), leaves_(context) {}

    // Tells the matches in the order of the signatures, then of the items. Those before `first` are passed over.
    // Memory that runs out leaves the one signature unknown that it runs out for.
    void evaluate(std::span<const Signature> signatures, std::size_t first = 0);

    // Tell how signatures with this identifier came out: a line for each of their conditions.
    void explain(std::string guid) { explained_ = std::move(guid); }

  private:
    void evaluateOne(const Signature& signature);
    void plan(std::span<const Signature> signatures);

    const Presets& presets_;
    EvaluationContext& context_;
    EvaluationSink& sink_;
    LeafCache leaves_;
    std::string explained_;
};

}  // namespace toolkit::quorvis
