#pragma once

#include <chrono>
#include <cstddef>
#include <unordered_set>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/facts/PackageIndex.h"
#include "toolkit/quorvis/facts/PackageOwners.h"
#include "toolkit/quorvis/facts/Processes.h"
#include "toolkit/quorvis/facts/SwidTags.h"
#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/regex/ContentFilters.h"
#include "toolkit/quorvis/regex/Regex.h"
#include "toolkit/quorvis/settings/Settings.h"
#include "toolkit/quorvis/walk/TreeSearch.h"

namespace toolkit::quorvis {

// All that leaves are looked up in. Each source is read on its first use, and once.
class EvaluationContext {
  public:
    // `start` is when the time for the evaluation began. REQUIRES: root and settings outlive this.
    EvaluationContext(const Root& root, const Settings& settings,
                      std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now())
        : root_(root),
          settings_(settings),
          budget_(start + settings.evaluation.timeLimit),
          files_(root, settings),
          tree_(root, settings, budget_),
          packages_(root, settings.packages, budget_),
          owners_(root, settings, budget_, packages_),
          processes_(root, settings.processes, budget_),
          swidTags_(files_, settings, budget_) {
        files_.countIn(budget_);
    }
    EvaluationContext(const EvaluationContext&) = delete;
    EvaluationContext& operator=(const EvaluationContext&) = delete;

    const Root& root() const { return root_; }
    const Settings& settings() const { return settings_; }
    LookupBudget& budget() { return budget_; }
    Files& files() { return files_; }
    TreeSearch& tree() { return tree_; }
    PackageIndex& packages() { return packages_; }
    PackageOwners& owners() { return owners_; }
    Processes& processes() { return processes_; }
    SwidTags& swidTags() { return swidTags_; }
    ContentFilters& contentFilters() { return contentFilters_; }
    // Hashes of the paths of programs that have no components in any format.
    std::unordered_set<std::size_t>& plainPrograms() { return plainPrograms_; }

    // Frees what can be read or made again. REQUIRES: no leaf is being looked up.
    void releaseMemory() {
        files_.forget();
        contentFilters_.forget();
        plainPrograms_.clear();
        forgetRegexes();
    }

  private:
    const Root& root_;
    const Settings& settings_;
    LookupBudget budget_;
    Files files_;
    TreeSearch tree_;
    PackageIndex packages_;
    PackageOwners owners_;
    Processes processes_;
    SwidTags swidTags_;
    ContentFilters contentFilters_;
    std::unordered_set<std::size_t> plainPrograms_;
};

}  // namespace toolkit::quorvis
