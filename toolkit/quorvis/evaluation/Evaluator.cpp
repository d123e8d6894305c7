#include "toolkit/quorvis/evaluation/Evaluator.h"

#include <algorithm>
#include <new>

#include "kest/Ascii.h"
#include "toolkit/quorvis/evaluation/Planner.h"

namespace toolkit::quorvis {

void Evaluator::evaluate(std::span<const Signature> signatures, const EvaluationStart& start) {
    leaves_.expect(signatures);
    plan(signatures.subspan(start.signature));
    for (std::size_t i = start.signature; i < signatures.size(); ++i) {
        if (context_.budget().expired()) {
            sink_.onEvent({EventCode::Deadline,
                           {},
                           "the time limit was reached: " + std::to_string(signatures.size() - i) +
                               " signatures were not evaluated",
                           {},
                           {}});
            return;
        }
        sink_.onBegin(i, signatures[i].guid);
        evaluateOne(signatures[i],
                    i == start.signature ? std::span(start.aborted) : std::span<const std::size_t>());
    }
}

// Without a plan the same results take longer.
void Evaluator::plan(std::span<const Signature> signatures) {
    try {
        Planner(presets_, leaves_, context_).plan(signatures);
    } catch (const std::bad_alloc&) {
        leaves_.forget();
        context_.releaseMemory();
    }
}

void Evaluator::evaluateOne(const Signature& signature, std::span<const std::size_t> aborted) {
    const bool explained = !explained_.empty() && kest::equalsIgnoringCase(explained_, signature.guid);
    SignatureEvaluation evaluation(signature, presets_, leaves_, context_, sink_, explained);
    const std::size_t fresh = aborted.empty() ? 0 : std::ranges::max(aborted) + 1;
    const std::size_t count = signature.detections.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (std::ranges::find(aborted, i) != aborted.end()) {
            evaluation.leaveOut();
            continue;
        }
        sink_.onDetection(i, i + 1 == count);
        try {
            evaluation.run(signature.detections[i], i < fresh);
        } catch (const std::bad_alloc&) {
            leaves_.forget();
            context_.releaseMemory();
            sink_.onEvent({EventCode::LimitMemory,
                           {},
                           "takes more memory than is allowed",
                           std::string(signature.guid),
                           {}});
            evaluation.leaveOut();
        }
    }
    evaluation.finish();
}

}  // namespace toolkit::quorvis
