#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/quorvis/walk/DirectoryChain.h"
#include "toolkit/quorvis/walk/GlobTrie.h"

namespace toolkit::quorvis {

// Directories that are to be entered, with the nodes that are active in them. A walk keeps those of all levels on one
// stack, and their names and nodes on two more.
struct PendingDirectories {
    // Nodes on the stack of active ones.
    struct Active {
        std::size_t begin = 0;
        std::size_t count = 0;
    };
    struct Directory {
        std::size_t name = 0;  // where it begins on the stack of names
        Active active;
        bool link = false;
    };

    std::vector<Directory> directories;
    std::vector<char> names;  // each with a NUL behind it
    std::vector<GlobTrie::NodeId> active;

    // Bytes.
    std::size_t size() const {
        return directories.size() * sizeof(Directory) + names.size() +
               active.size() * sizeof(GlobTrie::NodeId);
    }
};

// Some of the directories in one directory, for another walk to enter.
struct WalkShare {
    kest::Descriptor parent;
    std::vector<DirectoryChain::Identity> above;  // of what leads to the parent
    bool behindLink = false;                      // whether a link does
    std::string path;                             // of the parent
    std::uint32_t level = 0;                      // of the parent
    PendingDirectories pending;
};

// Where busy walks leave shares for those that have nothing to do.
class WalkShares {
  public:
    // One more walk takes part, which is not waiting yet.
    void join();
    // One that takes part does so no more.
    void leave();

    // Whether a walk waits for which there is no share.
    bool wanted() const { return wanted_.load(std::memory_order_relaxed) > 0; }
    void give(WalkShare share);
    // Waits for a share; none when all walks wait, so that everything has been entered.
    std::optional<WalkShare> take();

  private:
    void countWanted();
    bool allDone();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<WalkShare> shares_;
    unsigned walks_ = 0;
    unsigned waiting_ = 0;
    bool done_ = false;
    std::atomic<int> wanted_ = 0;
};

}  // namespace toolkit::quorvis
