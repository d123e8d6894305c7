#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/DirectoryOpener.h"
#include "toolkit/quorvis/GlobTrie.h"
#include "toolkit/quorvis/WalkFindings.h"

namespace toolkit::quorvis {

class Machine;

// A walk through the directories that the nodes of a trie lead to. What is kept for the directories between the top and
// the current one stands in stacks that all of them share.
class DirectoryWalk {
  public:
    DirectoryWalk(Machine& machine, GlobTrie& trie, WalkFindings& findings);

    void run();

  private:
    using NodeId = GlobTrie::NodeId;

    // Nodes on the stack of active ones.
    struct Active {
        std::size_t begin = 0;
        std::size_t count = 0;
    };
    // A directory to be entered once its parent has been read.
    struct Subdirectory {
        std::size_t name = 0;  // where it begins on the stack of names
        Active active;
        bool link = false;
    };
    struct Entry {
        const char* name;
        std::size_t length;
        unsigned char type;
    };

    std::span<const NodeId> nodes(const Active& active) const {
        return {active_.data() + active.begin, active.count};
    }
    void visit(const Active& active, std::uint32_t level, bool listable);
    void list(const Active& active, std::uint32_t level);
    bool readNames(const Active& active, std::uint32_t level);
    void take(const Active& active, const Entry& entry, std::uint32_t level);
    unsigned char typeOf(const Entry& entry) const;
    void enterSubdirectories(std::size_t first, std::uint32_t level);
    void stepToLiterals(const Active& active, std::uint32_t level);
    void stepToLiteral(std::span<const NodeId> children, std::uint32_t level);
    bool isThere(const char* name, NodeId node);
    void hitReached(std::string_view name);
    Active keepInner(const Entry& entry, std::uint32_t level);
    void reportDepth(NodeId node, const char* name);
    void enter(const char* name, Active active, std::uint32_t level, bool link);
    Active withoutExcluded(const Active& active);
    bool passesOver(NodeId node, const std::string& path) const;
    bool toList(const Active& active) const;
    void report(const Active& active, EventCode code, const std::string& text, bool listing);
    bool countEntry();

    Machine& machine_;
    GlobTrie& trie_;
    WalkFindings& findings_;
    DirectoryOpener opener_;
    std::vector<std::optional<PathPattern>> excludes_;  // by scope
    bool anyExclude_ = false;
    std::string path_;          // of the current directory; empty for the top
    std::vector<int> parents_;  // open directories down to the current one
    std::vector<NodeId> active_;
    std::vector<Subdirectory> subdirectories_;
    std::vector<char> names_;
    std::vector<NodeId> reached_;
    std::vector<char> buffer_;
};

}  // namespace toolkit::quorvis
