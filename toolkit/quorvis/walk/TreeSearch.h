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
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/settings/Settings.h"
#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/WalkProgress.h"

namespace toolkit::quorvis {

// Searches the tree of files for paths that match patterns, and keeps what it finds.
class TreeSearch {
  public:
    // REQUIRES: all arguments outlive this.
    TreeSearch(const Root& root, const Settings& settings, LookupBudget& budget)
        : root_(root), settings_(settings), budget_(budget) {}

    // The number of paths that an earlier walk found for this request; 0 if there was none.
    std::size_t countKnown(const GlobRequest& request) const;
    // What matches a request. Walks through directories unless an earlier walk had the same request.
    const GlobHits& hits(const GlobRequest& request);
    // Shows there how far the walk of searchAhead() is. REQUIRES: `progress` outlives this.
    void showProgress(WalkProgress& progress) { progress_ = &progress; }

    // Finds what matches each of these requests, in one walk.
    void searchAhead(std::vector<GlobRequest> requests);

    // The private places that walks came to since the last call.
    std::vector<Event> takePrivatePlaces() { return std::exchange(privatePlaces_, {}); }

    // From now on no directories are walked; the hits of new requests are incomplete.
    void refuseWalks() { walks_ = false; }

    // Walks once for all requests. Enters a directory at most once, and only where a match can be.
    std::vector<GlobHits> walk(std::span<const GlobRequest> requests) { return walk(requests, nullptr); }

  private:
    std::vector<GlobHits> walk(std::span<const GlobRequest> requests, WalkProgress* progress);
    std::vector<GlobHits> walkUntil(std::chrono::steady_clock::time_point deadline,
                                    std::span<const GlobRequest> requests, WalkProgress* progress);

    const Root& root_;
    const Settings& settings_;
    LookupBudget& budget_;
    std::unordered_map<std::string, GlobHits> hits_;
    std::atomic<std::uint64_t> namesSeen_ = 0;  // in all walks
    std::vector<Event> privatePlaces_;
    bool walks_ = true;
    WalkProgress* progress_ = nullptr;
};

}  // namespace toolkit::quorvis
