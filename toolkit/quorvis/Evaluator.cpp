#include "toolkit/quorvis/Evaluator.h"

#include "toolkit/machine/SameText.h"
#include "toolkit/quorvis/Planner.h"
#include "toolkit/quorvis/SignatureEvaluation.h"

namespace toolkit::quorvis {

std::vector<Match> Evaluator::evaluate(const std::vector<Signature>& signatures) {
    Planner(presets_, leaves_, machine_).plan(signatures);

    std::vector<Match> matches;
    for (std::size_t i = 0; i < signatures.size(); ++i) {
        if (machine_.late()) {
            events_.add({EventCode::Deadline,
                         {},
                         "the time limit was reached: " + std::to_string(signatures.size() - i) +
                             " signatures were not evaluated",
                         {},
                         {}});
            break;
        }
        const bool explained = !explained_.empty() && sameButForCase(explained_, signatures[i].guid);
        SignatureEvaluation(signatures[i], presets_, leaves_, machine_.settings(), events_,
                            explained ? &explanation_ : nullptr)
            .run(matches);
    }
    return matches;
}

}  // namespace toolkit::quorvis
