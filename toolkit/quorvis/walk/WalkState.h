// The data of a walk: what its threads share, the queue of work for idle threads, and the findings of each thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"
#include "toolkit/quorvis/walk/DirectoryOpener.h"
#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/WalkProgress.h"

namespace toolkit::quorvis {

// Directories that are still to be entered, with the nodes that are active in them. A walk keeps those of all levels on
// one stack, and their names and nodes on two more.
struct PendingDirectories {
    // A range of the stack of active nodes.
    struct Active {
        std::size_t begin = 0;
        std::size_t count = 0;
    };
    struct Directory {
        std::size_t name = 0;  // where it begins on the stack of names
        Active active;
        bool link = false;
        float share = 0;  // of the walk, see WalkProgress
    };

    std::vector<Directory> directories;
    std::vector<char> names;  // each ends in a NUL
    std::vector<GlobTrie::NodeId> active;

    std::size_t sizeInBytes() const {
        return directories.size() * sizeof(Directory) + names.size() +
               active.size() * sizeof(GlobTrie::NodeId);
    }
};

// Some of the pending directories in one parent directory, for another thread to enter.
struct WorkItem {
    kest::Descriptor parent;
    std::vector<DirectoryChain::Identity> above;  // the directories that lead to the parent
    bool behindLink = false;                      // whether the path to the parent has a link
    std::string path;                             // of the parent
    std::uint32_t level = 0;                      // of the parent
    PendingDirectories pending;
};

// Through this queue busy threads give work to idle ones.
class WorkQueue {
  public:
    // Counts a thread that will use the queue, before it starts.
    void join();
    // Counts a thread that has ended.
    void leave();

    // Whether a thread waits for which there is no work.
    bool hungry() const { return hungry_.load(std::memory_order_relaxed) > 0; }
    void put(WorkItem item);
    // Waits for work. None when all threads wait: everything has been entered.
    std::optional<WorkItem> take();

  private:
    void updateHungry();
    bool allDone();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<WorkItem> items_;
    unsigned threads_ = 0;
    unsigned waiting_ = 0;
    bool done_ = false;
    std::atomic<int> hungry_ = 0;
};

// What the threads of one walk share.
class WalkState {
  public:
    // `namesSeen` counts the names of all walks. The walk ends at `deadline`. `progress` may be null.
    WalkState(const Root& root, const Settings& settings, const GlobTrie& trie,
              std::atomic<std::uint64_t>& namesSeen, std::chrono::steady_clock::time_point deadline,
              WalkProgress* progress);

    const GlobTrie& trie() const { return trie_; }
    DirectoryOpener& opener() { return opener_; }
    WorkQueue& queue() { return queue_; }

    // Whether the requests of this node exclude the path.
    bool excludes(GlobTrie::NodeId node, const std::string& path) const;
    bool anyExclude() const { return anyExclude_; }

    // Returns how many of `count` further names may be looked at. Fewer than `count` end the walk.
    std::uint64_t claimNames(std::uint64_t count);
    std::uint64_t maxNamesPerDirectory() const;

    void addProgress(std::uint64_t names, double share) {
        if (progress_ != nullptr) progress_->add(names, share);
    }

    // Ends the walk at the deadline.
    void checkTime();
    void stop() { stopped_.store(true, std::memory_order_relaxed); }
    bool stopped() const { return stopped_.load(std::memory_order_relaxed); }
    // Why the walk ended early. REQUIRES: its threads have ended.
    const std::optional<Event>& ending() const { return ending_; }

  private:
    void end(EventCode code, std::string text);

    const Settings& settings_;
    const GlobTrie& trie_;
    std::atomic<std::uint64_t>& namesSeen_;
    std::chrono::steady_clock::time_point deadline_;
    WalkProgress* progress_;
    DirectoryOpener opener_;
    WorkQueue queue_;
    std::vector<std::optional<PathPattern>> excludes_;  // by scope
    bool anyExclude_ = false;
    std::atomic<bool> stopped_ = false;
    std::mutex mutex_;
    std::optional<Event> ending_;
};

// Collects what one thread finds, and what keeps it from finding everything. The merged findings of all threads do not
// depend on their order, nor on which thread found what.
class WalkFindings {
  public:
    WalkFindings(const GlobTrie& trie, std::size_t requests, std::uint64_t maxMatches)
        : trie_(trie), maxMatches_(maxMatches), found_(requests), lastHits_(requests) {}

    // Starts another name. A name counts once for each request.
    void nextName() { ++name_; }

    // Notes a path that matches the requests that end at this node.
    void addHit(GlobTrie::NodeId node, const std::string& path, const WalkedFile& file);
    // Notes that something could not be examined that may hold a match for this node or those below it.
    void addProblem(GlobTrie::NodeId node, EventCode code, const std::string& path, std::string text);
    // Notes a place that the user of the scanner, or every user, may not see. It is also a problem of one or more nodes.
    void addPrivatePlace(EventCode code, const std::string& path, std::string text);

    void merge(WalkFindings&& other);
    // The private places, the first ones by path, and the number of the others.
    std::vector<Event> takePrivatePlaces();
    // Moves everything into the hits of the requests, with the event that ended the walk early.
    void moveTo(std::vector<GlobHits>& hits, const std::optional<Event>& ending);

  private:
    struct Hit {
        std::string path;
        WalkedFile file;
        bool operator<(const Hit& other) const { return path < other.path; }
    };
    struct Found {
        std::vector<Hit> hits;  // a heap with the last path on top
        bool tooMany = false;
        bool tooLong = false;
    };
    void keep(Found& found, Hit hit);
    // False when one had to be left out.
    static bool keep(std::vector<Event>& events, Event event, std::size_t limit);

    const GlobTrie& trie_;
    std::uint64_t maxMatches_;
    std::vector<Found> found_;                                 // by request
    std::map<GlobTrie::NodeId, std::vector<Event>> problems_;  // for each node the first ones by path
    std::vector<Event> privatePlaces_;                         // the first ones by path
    std::map<EventCode, std::uint64_t> morePrivatePlaces_;
    std::vector<std::uint64_t> lastHits_;  // by request: the latest name that matched
    std::uint64_t name_ = 0;
    std::size_t held_ = 0;  // bytes of all paths
};

}  // namespace toolkit::quorvis
