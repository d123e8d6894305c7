#include "toolkit/quorvis/evaluation/Evaluator.h"

#include <new>

#include "kest/Ascii.h"
#include "toolkit/quorvis/evaluation/Planner.h"
#include "toolkit/quorvis/evaluation/SignatureEvaluation.h"

namespace toolkit::quorvis {

void Evaluator::evaluate(std::span<const Signature> signatures, std::size_t first) {
    leaves_.expect(signatures);
    plan(signatures.subspan(first));
    for (std::size_t i = first; i < signatures.size(); ++i) {
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
        evaluateOne(signatures[i]);
    }
}

// Without a plan each signature asks for itself, which only takes longer.
void Evaluator::plan(std::span<const Signature> signatures) {
    try {
        Planner(presets_, leaves_, context_).plan(signatures);
    } catch (const std::bad_alloc&) {
        leaves_.forget();
        context_.releaseMemory();
    }
}

void Evaluator::evaluateOne(const Signature& signature) {
    const bool explained = !explained_.empty() && kest::equalsIgnoringCase(explained_, signature.guid);
    if (leaves_.holdTooMuch()) leaves_.forget();
    try {
        SignatureEvaluation(signature, presets_, leaves_, context_.settings(), sink_, explained).run();
    } catch (const std::bad_alloc&) {
        leaves_.forget();
        context_.releaseMemory();
        const std::string guid(signature.guid);
        sink_.onEvent({EventCode::LimitMemory, {}, "takes more memory than is allowed", guid, {}});
        sink_.onEvent({EventCode::Unresolved, {}, "whether the signature matches is unknown", guid, {}});
    }
}

}  // namespace toolkit::quorvis
