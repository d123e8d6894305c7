#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/walk/DirectoryOpener.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/WalkState.h"

namespace toolkit::quorvis {

// The part of a walk that one thread does: enters the directories that the nodes of a trie lead to. The data of all
// directories between the top and the current one is on common stacks.
class DirectoryWalk {
  public:
    DirectoryWalk(WalkState& state, WalkFindings& findings);

    // Starts at the top of the tree.
    void begin();
    // Starts with work from another thread. REQUIRES: step() has returned false.
    void takeOver(WorkItem item);
    // Enters the next directory. First gives away some of the pending ones if another thread is idle. False when none is
    // left.
    bool step();

    // The number of directories that were entered.
    std::uint64_t entered() const { return entered_; }

  private:
    using NodeId = GlobTrie::NodeId;
    using Active = PendingDirectories::Active;
    using Subdirectory = PendingDirectories::Directory;

    // A directory that has been read. The sizes of the stacks are those before it.
    struct Level {
        std::size_t pathLength = 0;
        std::uint32_t number = 0;  // 0 for the top
        std::size_t next = 0;      // the subdirectories that are still to be entered: from `next` up to `end`
        std::size_t end = 0;
        std::size_t directories = 0;
        std::size_t names = 0;
        std::size_t active = 0;
    };
    struct Entry {
        const char* name;
        std::size_t length;
        unsigned char type;
    };

    std::span<const NodeId> nodes(const Active& active) const {
        return {pending_.active.data() + active.begin, active.count};
    }
    void visit(DirectoryOpener::Result opened, const Active& active, std::uint32_t level, float share);
    void shareOut(float share, std::size_t first);
    void showProgress();
    void leave();
    void readNames(const Active& active, std::uint32_t level);
    bool takeNames(std::span<const char> read, const Active& active, std::uint32_t level,
                   std::uint64_t& count);
    void take(const Active& active, const Entry& entry, std::uint32_t level);
    unsigned char typeOf(const Entry& entry) const;
    void stepToLiterals(const Active& active, std::uint32_t level);
    void stepToLiteral(std::span<const NodeId> children, std::uint32_t level);
    bool exists(const char* name, std::span<const NodeId> nodes);
    void hitReached(const Entry& entry);
    WalkedFile lookAt(const Entry& entry, const std::string& path) const;
    void keepInner(const Entry& entry, std::uint32_t level, bool link);
    void reportDepth(NodeId node, const char* name);
    void enter(const Subdirectory& next, std::uint32_t level);
    Active withoutExcluded(const Active& active);
    bool needsListing(const Active& active) const;
    void report(const Active& active, EventCode code, const std::string& text, bool listingOnly);
    void report(std::span<const NodeId> nodes, EventCode code, const std::string& path,
                const std::string& text);
    bool maySearchHere() const;
    void giveWork();
    WorkItem workFrom(std::size_t level, std::size_t first);

    WalkState& state_;
    const GlobTrie& trie_;
    WalkFindings& findings_;
    GlobTrie::NodeSet reached_;
    std::unique_ptr<char[]> buffer_;
    std::string path_;  // of the current directory; empty for the top
    DirectoryChain chain_;
    std::vector<Level> levels_;  // of the directories in the chain
    PendingDirectories pending_;
    std::uint64_t entered_ = 0;
    std::uint64_t names_ = 0;  // that were read since showProgress()
    double share_ = 0;         // of the walk that was done since then
};

}  // namespace toolkit::quorvis
