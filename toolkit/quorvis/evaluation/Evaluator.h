#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvis/evaluation/SignatureEvaluation.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/language/Variables.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafCache.h"

namespace toolkit::quorvis {

// Where an evaluation begins.
struct EvaluationStart {
    std::size_t signature = 0;
    // Detections of this signature whose evaluation was aborted before. They are left out. Those before the last one of them
    // are evaluated again, but their results, which were reported before, are not.
    std::vector<std::size_t> aborted;
};

// Decides which signatures match.
class Evaluator {
  public:
    // REQUIRES: all arguments outlive this.
    Evaluator(const Presets& presets, EvaluationContext& context, EvaluationSink& sink)
        : presets_(presets), context_(context), sink_(sink), leaves_(context) {}

    // Reports matches in the order of the signatures, those of one signature in the order of its Detections and items. A
    // Detection for which memory runs out is unknown.
    void evaluate(std::span<const Signature> signatures, const EvaluationStart& start = {});

    // Explain the results of all conditions in the signatures with this identifier.
    void explain(std::string guid) { explained_ = std::move(guid); }

  private:
    void evaluateOne(const Signature& signature, std::span<const std::size_t> aborted);
    void plan(std::span<const Signature> signatures);
    std::size_t countItems(const Signature& signature) const;

    const Presets& presets_;
    EvaluationContext& context_;
    EvaluationSink& sink_;
    LeafCache leaves_;
    std::string explained_;
};

}  // namespace toolkit::quorvis
