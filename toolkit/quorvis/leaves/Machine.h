#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/facts/PackageIndex.h"
#include "toolkit/quorvis/facts/Processes.h"
#include "toolkit/quorvis/facts/SwidTags.h"
#include "toolkit/quorvis/files/Effort.h"
#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/regex/ContentFilters.h"
#include "toolkit/quorvis/settings/Settings.h"
#include "toolkit/quorvis/walk/TreeWalk.h"

namespace toolkit::quorvis {

// The scanned machine, as the leaves see it. Everything is read when it is first asked for, and once.
class Machine {
  public:
    // `start` is when the time for the evaluation began.
    Machine(const Root& root, const Settings& settings,
            std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now())
        : root_(root),
          settings_(settings),
          effort_(settings, start + settings.evaluation.timeLimit),
          files_(root, settings) {
        files_.countIn(effort_);
    }

    const Root& root() const { return root_; }
    const Settings& settings() const { return settings_; }
    Effort& effort() { return effort_; }
    Files& files() { return files_; }
    PackageIndex& packages() { return packages_; }
    Processes& processes() { return processes_; }
    SwidTags& swidTags() { return swidTags_; }
    ContentFilters& contentFilters() { return contentFilters_; }

    // Whether the time for the whole evaluation is over.
    bool late() const { return effort_.late(); }

    // Counts names that a walk is about to look at; returns how many all walks had counted before. Threads may do so.
    std::uint64_t countEntries(std::uint64_t more) { return entriesSeen_.fetch_add(more); }

    // Lets go of what can be read or made again. REQUIRES: no leaf is being looked up.
    void forget();

    // From now on directories are not walked, or files not searched for many expressions at once.
    void refuseWalks() { walks_ = false; }
    void refuseFilters() { contentFilters_.turnOff(); }

    // What a walk found for this request; walked now unless it was found before.
    const GlobHits& hits(const GlobRequest& request);
    // Finds all these in one walk.
    void walkAhead(std::vector<GlobRequest> requests);

  private:
    std::vector<GlobHits> walk(std::span<const GlobRequest> requests);

    const Root& root_;
    const Settings& settings_;
    Effort effort_;
    Files files_;
    PackageIndex packages_;
    Processes processes_;
    SwidTags swidTags_;
    ContentFilters contentFilters_;
    std::unordered_map<std::string, GlobHits> hits_;
    std::atomic<std::uint64_t> entriesSeen_ = 0;
    bool walks_ = true;
};

}  // namespace toolkit::quorvis
