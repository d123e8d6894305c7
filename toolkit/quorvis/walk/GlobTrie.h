#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/IndexTable.h"

namespace toolkit::quorvis {

// What all requests have in common that share nodes of a trie.
struct GlobScope {
    unsigned maxDepth = 0;      // levels below the fixed directories
    bool depthIsAsked = false;  // by the request itself
    std::string exclude;

    bool operator==(const GlobScope&) const = default;
};

// The steps of many patterns, merged where they begin alike. In each directory of a walk some of the nodes are
// active: those that the directory's path leads to. Once it is made, several threads may use it.
class GlobTrie {
  public:
    using NodeId = std::uint32_t;

    // Nodes that a name leads to, each once, in the order in which they were added.
    class NodeSet {
      public:
        explicit NodeSet(const GlobTrie& trie) : rounds_(trie.size()) {}

        void clear() {
            nodes_.clear();
            ++round_;
        }
        // False for one that is there already.
        bool add(NodeId id) {
            if (rounds_[id] == round_) return false;
            rounds_[id] = round_;
            nodes_.push_back(id);
            return true;
        }
        std::span<const NodeId> nodes() const { return nodes_; }

      private:
        std::vector<NodeId> nodes_;
        std::vector<std::uint32_t> rounds_;  // by node: the latest round in which it was added
        std::uint32_t round_ = 1;
    };
    static constexpr std::uint32_t kNoBound = std::numeric_limits<std::uint32_t>::max();

    struct Node {
        bool anyDepth = false;       // stays active in the directories below
        bool lists = false;          // needs the names in the directory; else the literal children are all
        NodeId depthChild = 0;       // that of a "**" behind this node
        NodeId star = 0;             // that of a "*"
        std::uint32_t prefixes = 0;  // start of the patterns that are found by their first bytes
        std::uint32_t suffixes = 0;  // and by their last bytes
        std::uint32_t bound = kNoBound;  // the deepest level of names that it may match
        std::uint32_t scope = 0;
        std::uint32_t endings = 0;  // list of the requests that end here
        NodeId firstChild = 0;
        NodeId nextSibling = 0;
        std::uint32_t name = 0;     // of a literal child
        std::uint32_t pattern = 0;  // of a wildcard child

        bool inner() const { return firstChild != 0; }
        bool ends() const { return endings != 0; }
    };

    // Adds one alternative of a request's pattern.
    void add(const GlobSteps& steps, const GlobScope& scope, std::uint32_t request);

    // The nodes that are active in the topmost directory.
    std::vector<NodeId> start() const;

    // Makes `reached` the nodes that the name leads to. Those of a "**" stay active when `below` is set, as for a
    // directory that is no link.
    void advance(std::span<const NodeId> active, std::string_view name, bool below, NodeSet& reached) const;
    // Adds a node and those that are active with it.
    void reach(NodeId id, NodeSet& reached) const;

    const Node& node(NodeId id) const { return nodes_[id]; }
    std::size_t size() const { return nodes_.size(); }
    bool empty() const { return tops_.empty(); }
    std::size_t scopeCount() const { return scopes_.size(); }
    const GlobScope& scope(std::uint32_t index) const { return scopes_[index]; }
    // Of a literal child.
    const std::string& nameOf(NodeId id) const { return names_.nameOf(nodes_[id].name); }
    std::vector<NodeId> literalChildren(std::span<const NodeId> parents) const;
    // Calls `tell` for each request that ends at this node.
    template <typename Tell>
    void forEachRequest(NodeId id, const Tell& tell) const {
        for (std::uint32_t i = nodes_[id].endings; i != 0; i = endings_[i].next) tell(endings_[i].value);
    }
    // The requests that end at this node or below, in order.
    std::vector<std::uint32_t> requestsBelow(NodeId id) const;

  private:
    // One of a list; 0 is no place.
    struct Link {
        std::uint32_t value = 0;
        std::uint32_t next = 0;
    };
    static void prepend(std::vector<Link>& links, std::uint32_t& first, std::uint32_t value);
    NodeId addNode(NodeId parent);
    NodeId topOf(const GlobScope& scope);
    NodeId childFor(NodeId parent, const GlobStep& step);
    NodeId literalChild(NodeId parent, const std::string& name);
    NodeId wildcardChild(NodeId parent, const std::string& pattern);
    NodeId depthChild(NodeId parent);
    void file(NodeId parent, NodeId child);
    std::uint32_t byteNode(std::uint32_t& start, std::string_view bytes, bool backwards);
    void reachFiled(std::uint32_t place, std::string_view name, NodeSet& reached) const;
    void reachByBytes(std::uint32_t start, std::string_view name, bool backwards, NodeSet& reached) const;

    std::vector<Node> nodes_ = std::vector<Node>(1);  // node 0 is none
    std::vector<Link> endings_ = std::vector<Link>(1);
    std::vector<GlobScope> scopes_;
    std::vector<NodeId> tops_;  // of the scopes
    NameTable names_;
    PairTable literals_;  // node and name to child
    NameTable patterns_;
    PairTable wildcards_;                // node and pattern to child
    std::vector<NamePattern> compiled_;  // by the number of the pattern, from 1
    PairTable bytes_;                    // place and byte to the place of the longer text
    std::vector<std::uint32_t> byPlace_ = std::vector<std::uint32_t>(1);  // lists of wildcard children
    std::vector<Link> filed_ = std::vector<Link>(1);
};

}  // namespace toolkit::quorvis
