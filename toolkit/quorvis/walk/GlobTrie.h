#pragma once

#include <bitset>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/HashTables.h"

namespace toolkit::quorvis {

// Requests with the same scope share the nodes of a trie.
struct GlobScope {
    unsigned maxDepth = 0;      // levels below the fixed directories
    bool depthIsAsked = false;  // by the request itself
    std::string exclude;

    bool operator==(const GlobScope&) const = default;
};

// The steps of many patterns, with common beginnings merged. In each directory of a walk, the nodes that its path leads to
// are active. Thread-safe after the last add().
class GlobTrie {
  public:
    using NodeId = std::uint32_t;

    // A set of nodes in the order in which they were added.
    class NodeSet {
      public:
        explicit NodeSet(const GlobTrie& trie) : rounds_(trie.size()) {}

        void clear() {
            nodes_.clear();
            ++round_;
        }
        // False when the set has the node.
        bool add(NodeId id) {
            if (rounds_[id] == round_) return false;
            rounds_[id] = round_;
            nodes_.push_back(id);
            return true;
        }
        std::span<const NodeId> nodes() const { return nodes_; }

      private:
        std::vector<NodeId> nodes_;
        std::vector<std::uint32_t> rounds_;  // by node: the last round in which it was added
        std::uint32_t round_ = 1;
    };
    static constexpr std::uint32_t kNoBound = std::numeric_limits<std::uint32_t>::max();

    struct Node {
        bool anyDepth = false;       // stays active in the directories below
        bool lists = false;          // needs a listing of the directory, because not all children are literal
        NodeId depthChild = 0;       // the child for a "**"
        NodeId star = 0;             // the child for a "*"
        std::uint32_t prefixes = 0;  // root of the wildcard children that are found by their first bytes
        std::uint32_t suffixes = 0;  // root of those that are found by their last bytes
        std::uint32_t bound = kNoBound;  // the deepest level that it may match
        std::uint32_t scope = 0;
        std::uint32_t endings = 0;  // head of the list of requests that end here
        NodeId firstChild = 0;
        NodeId nextSibling = 0;
        std::uint32_t name = 0;     // of a literal child
        std::uint32_t pattern = 0;  // of a wildcard child

        bool inner() const { return firstChild != 0; }
        bool ends() const { return endings != 0; }
    };

    // Adds one alternative of the pattern of a request.
    void add(const GlobSteps& steps, const GlobScope& scope, std::uint32_t request);

    // The nodes that are active in the top directory.
    std::vector<NodeId> start() const;

    // Sets `reached` to the nodes that a name leads to. `below`: whether the name is a directory and not a link, in which
    // nodes of a "**" stay active.
    void advance(std::span<const NodeId> active, std::string_view name, bool below, NodeSet& reached) const;
    // Adds a node and the nodes that are active together with it.
    void reach(NodeId id, NodeSet& reached) const;

    const Node& node(NodeId id) const { return nodes_[id]; }
    std::size_t size() const { return nodes_.size(); }
    bool empty() const { return tops_.empty(); }
    std::size_t scopeCount() const { return scopes_.size(); }
    const GlobScope& scope(std::uint32_t index) const { return scopes_[index]; }
    // The name of a literal child.
    const std::string& nameOf(NodeId id) const { return names_.nameOf(nodes_[id].name); }
    std::vector<NodeId> literalChildren(std::span<const NodeId> parents) const;
    // Calls `visit` with each request that ends at this node.
    template <typename Visit>
    void forEachRequest(NodeId id, const Visit& visit) const {
        for (std::uint32_t i = nodes_[id].endings; i != 0; i = endings_[i].next) visit(endings_[i].value);
    }
    // The requests that end at this node or below it, sorted.
    std::vector<std::uint32_t> requestsBelow(NodeId id) const;

  private:
    // An element of a list. Index 0 ends the list.
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
    void indexWildcard(NodeId parent, NodeId child);
    std::uint32_t addByteNode(std::uint32_t& start, std::string_view bytes, bool backwards);
    void reachWildcards(std::uint32_t byteNode, std::string_view name, NodeSet& reached) const;
    void reachByBytes(std::uint32_t start, std::string_view name, bool backwards, NodeSet& reached) const;

    std::vector<Node> nodes_ = std::vector<Node>(1);  // node 0 means none
    std::vector<Link> endings_ = std::vector<Link>(1);
    std::vector<GlobScope> scopes_;
    std::vector<NodeId> tops_;  // by scope
    NameTable names_;
    PairTable literals_;  // from node and name to child
    NameTable patterns_;
    PairTable wildcards_;                // from node and pattern to child
    std::vector<NamePattern> compiled_;  // by the number of the pattern, from 1
    PairTable bytes_;                    // from byte node and byte to the next byte node
    std::vector<std::bitset<256>> followed_ =
        std::vector<std::bitset<256>>(1);  // by byte node: the bytes with a next one
    std::vector<std::uint32_t> byByteNode_ =
        std::vector<std::uint32_t>(1);  // by byte node: list of wildcard children
    std::vector<Link> wildcardLists_ = std::vector<Link>(1);
};

}  // namespace toolkit::quorvis
