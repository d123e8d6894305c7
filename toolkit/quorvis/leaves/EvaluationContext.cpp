#include "toolkit/quorvis/leaves/EvaluationContext.h"

#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

EvaluationContext::EvaluationContext(const Root& root, const Settings& settings,
                                     std::chrono::steady_clock::time_point start)
    : root_(root),
      settings_(settings),
      budget_(start + settings.evaluation.timeLimit),
      files_(root, settings),
      tree_(root, settings, budget_),
      packages_(root, settings.packages, budget_),
      processes_(root, settings.processes, budget_),
      swidTags_(files_, settings, budget_) {
    files_.countIn(budget_);
}

void EvaluationContext::releaseMemory() {
    files_.forget();
    contentFilters_.forget();
    forgetRegexes();
}

}  // namespace toolkit::quorvis
