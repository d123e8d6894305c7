#include "toolkit/quorvis/evaluation/Evaluator.h"

#include <algorithm>
#include <new>

#include "kest/Ascii.h"
#include "toolkit/quorvis/evaluation/Planner.h"

namespace toolkit::quorvis {

void Evaluator::evaluate(std::span<const Signature> signatures, const EvaluationStart& start) {
    leaves_.expect(signatures);
    plan(signatures.subspan(start.signature));
    std::size_t done = 0;
    std::size_t total = 0;
    for (const Signature& signature : signatures.subspan(start.signature)) total += countItems(signature);
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
        sink_.onProgress(done, total);
        done += countItems(signatures[i]);
        sink_.onBegin(i, signatures[i].guid);
        evaluateOne(signatures[i],
                    i == start.signature ? std::span(start.aborted) : std::span<const std::size_t>());
    }
}

// The files that were found for a signature, and one for itself.
std::size_t Evaluator::countItems(const Signature& signature) const {
    const Scope scope(presets_, signature);
    std::size_t count = 1;
    for (const Detection& detection : signature.detections) {
        if (detection.each.empty()) continue;
        const Leaf& each = signature.leaves[detection.each.front()];
        if (each.kind != LeafKind::Glob) continue;
        std::string_view missing;
        const auto query = LeafCache::query(each, scope, missing);
        if (query) count += context_.tree().countKnown(globRequestOf(*query));
    }
    return count;
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
            evaluation.leaveOut(EventCode::Aborted);
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
            evaluation.leaveOut(EventCode::LimitMemory);
        }
    }
    evaluation.finish();
}

}  // namespace toolkit::quorvis
