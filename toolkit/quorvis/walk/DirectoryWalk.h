#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/walk/DirectoryChain.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/SharedWalk.h"
#include "toolkit/quorvis/walk/WalkFindings.h"

namespace toolkit::quorvis {

// One thread's way through the directories that the nodes of a trie lead to. What is kept for the directories between
// the top and the current one stands in stacks that all of them share.
class DirectoryWalk {
  public:
    DirectoryWalk(SharedWalk& shared, WalkFindings& findings);

    // Begins at the top of the tree.
    void begin();
    // Goes on with a share of another walk. REQUIRES: step() has returned false.
    void takeOver(WalkShare share);
    // Enters the next directory, and gives some of the others away when they are wanted. False when none is left.
    bool step();

    // How many directories have been entered.
    std::uint64_t entered() const { return entered_; }

  private:
    using NodeId = GlobTrie::NodeId;
    using Active = PendingDirectories::Active;
    using Subdirectory = PendingDirectories::Directory;

    // A directory that has been read, and of the stacks what is above it.
    struct Level {
        std::size_t pathLength = 0;
        std::uint32_t number = 0;  // of steps from the top
        std::size_t next = 0;      // the subdirectories to be entered
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
    void visit(DirectoryOpener::Result opened, const Active& active, std::uint32_t level);
    void leave();
    void readNames(const Active& active, std::uint32_t level);
    bool takeNames(std::span<const char> read, const Active& active, std::uint32_t level,
                   std::uint64_t& count);
    void take(const Active& active, const Entry& entry, std::uint32_t level);
    unsigned char typeOf(const Entry& entry) const;
    void stepToLiterals(const Active& active, std::uint32_t level);
    void stepToLiteral(std::span<const NodeId> children, std::uint32_t level);
    bool isThere(const char* name, NodeId node);
    void hitReached(std::string_view name);
    void keepInner(const Entry& entry, std::uint32_t level, bool link);
    void reportDepth(NodeId node, const char* name);
    void enter(const Subdirectory& next, std::uint32_t level);
    Active withoutExcluded(const Active& active);
    bool toList(const Active& active) const;
    void report(const Active& active, EventCode code, const std::string& text, bool listing);
    void share();
    WalkShare shareOf(std::size_t level, std::size_t first);

    SharedWalk& shared_;
    const GlobTrie& trie_;
    WalkFindings& findings_;
    GlobTrie::NodeSet reached_;
    std::unique_ptr<char[]> buffer_;
    std::string path_;  // of the current directory; empty for the top
    DirectoryChain chain_;
    std::vector<Level> levels_;  // of the directories in the chain
    PendingDirectories pending_;
    std::uint64_t entered_ = 0;
};

}  // namespace toolkit::quorvis
