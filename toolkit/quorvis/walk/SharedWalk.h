#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/walk/DirectoryOpener.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/WalkShares.h"

namespace toolkit::quorvis {

// What the threads of one walk have in common.
class SharedWalk {
  public:
    // It ends at `end` at the latest.
    // `namesSeen` counts the names of all walks.
    SharedWalk(const Root& root, const Settings& settings, const GlobTrie& trie,
               std::atomic<std::uint64_t>& namesSeen, std::chrono::steady_clock::time_point end);

    const GlobTrie& trie() const { return trie_; }
    DirectoryOpener& opener() { return opener_; }
    WalkShares& shares() { return shares_; }

    // Whether the requests of this node leave the path out.
    bool passesOver(GlobTrie::NodeId node, const std::string& path) const;
    bool anyExclude() const { return anyExclude_; }

    // How many of these names may be looked at; fewer than all end the walk.
    std::uint64_t claimNames(std::uint64_t count);
    std::uint64_t mostNamesOfDirectory() const;

    // Ends the walk when the time is over.
    void watchTime();
    void stop() { stopped_.store(true, std::memory_order_relaxed); }
    bool stopped() const { return stopped_.load(std::memory_order_relaxed); }
    // Why the walk ended before its time. REQUIRES: its threads have ended.
    const std::optional<Event>& ending() const { return ending_; }

  private:
    void end(EventCode code, std::string text);

    const Settings& settings_;
    const GlobTrie& trie_;
    std::atomic<std::uint64_t>& namesSeen_;
    std::chrono::steady_clock::time_point end_;
    DirectoryOpener opener_;
    WalkShares shares_;
    std::vector<std::optional<PathPattern>> excludes_;  // by scope
    bool anyExclude_ = false;
    std::atomic<bool> stopped_ = false;
    std::mutex mutex_;
    std::optional<Event> ending_;
};

}  // namespace toolkit::quorvis
