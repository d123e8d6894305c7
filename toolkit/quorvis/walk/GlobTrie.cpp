#include "toolkit/quorvis/walk/GlobTrie.h"

#include <algorithm>

namespace toolkit::quorvis {

void GlobTrie::prepend(std::vector<Link>& links, std::uint32_t& first, std::uint32_t value) {
    links.push_back({value, first});
    first = static_cast<std::uint32_t>(links.size() - 1);
}

GlobTrie::NodeId GlobTrie::addNode(NodeId parent) {
    const auto id = static_cast<NodeId>(nodes_.size());
    nodes_.emplace_back();
    if (parent != 0) {
        nodes_[id].scope = nodes_[parent].scope;
        nodes_[id].bound = nodes_[parent].bound;
        nodes_[id].nextSibling = nodes_[parent].firstChild;
        nodes_[parent].firstChild = id;
    }
    return id;
}

GlobTrie::NodeId GlobTrie::topOf(const GlobScope& scope) {
    const auto known = std::ranges::find(scopes_, scope);
    if (known != scopes_.end()) return tops_[static_cast<std::size_t>(known - scopes_.begin())];
    const NodeId top = addNode(0);
    nodes_[top].scope = static_cast<std::uint32_t>(scopes_.size());
    scopes_.push_back(scope);
    tops_.push_back(top);
    return top;
}

GlobTrie::NodeId GlobTrie::literalChild(NodeId parent, const std::string& name) {
    const std::uint32_t number = names_.add(name);
    if (const NodeId known = literals_.find(parent, number); known != 0) return known;
    const NodeId child = addNode(parent);
    nodes_[child].name = number;
    literals_.add(parent, number, child);
    return child;
}

// The byte node of these bytes, which is added if it is missing.
std::uint32_t GlobTrie::addByteNode(std::uint32_t& start, std::string_view bytes, bool backwards) {
    const auto newByteNode = [&] {
        byByteNode_.push_back(0);
        followed_.emplace_back();
        return static_cast<std::uint32_t>(byByteNode_.size() - 1);
    };
    if (start == 0) start = newByteNode();
    std::uint32_t byteNode = start;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[backwards ? bytes.size() - 1 - i : i]);
        std::uint32_t next = bytes_.find(byteNode, byte);
        if (next == 0) {
            next = newByteNode();
            bytes_.add(byteNode, byte, next);
            followed_[byteNode].set(byte);
        }
        byteNode = next;
    }
    return byteNode;
}

// Indexes a wildcard child by the prefix or the suffix of its pattern, whichever is longer.
void GlobTrie::indexWildcard(NodeId parent, NodeId child) {
    Node& node = nodes_[parent];
    const NamePattern& pattern = compiled_[nodes_[child].pattern - 1];
    if (pattern.any()) {
        node.star = child;
        return;
    }
    const bool byEnd = pattern.suffix().size() > pattern.prefix().size();
    const std::uint32_t byteNode = byEnd ? addByteNode(node.suffixes, pattern.suffix(), true)
                                         : addByteNode(node.prefixes, pattern.prefix(), false);
    prepend(wildcardLists_, byByteNode_[byteNode], child);
}

GlobTrie::NodeId GlobTrie::wildcardChild(NodeId parent, const std::string& pattern) {
    const std::uint32_t number = patterns_.add(pattern);
    if (number > compiled_.size()) compiled_.emplace_back(pattern);
    if (const NodeId known = wildcards_.find(parent, number); known != 0) return known;
    const NodeId child = addNode(parent);
    nodes_[child].pattern = number;
    wildcards_.add(parent, number, child);
    nodes_[parent].lists = true;
    indexWildcard(parent, child);
    return child;
}

GlobTrie::NodeId GlobTrie::depthChild(NodeId parent) {
    if (nodes_[parent].depthChild == 0) {
        const NodeId child = addNode(parent);
        nodes_[child].anyDepth = true;
        nodes_[child].lists = true;
        nodes_[parent].depthChild = child;
    }
    return nodes_[parent].depthChild;
}

GlobTrie::NodeId GlobTrie::childFor(NodeId parent, const GlobStep& step) {
    switch (step.kind) {
        case GlobStep::Kind::Literal:
            return literalChild(parent, step.text);
        case GlobStep::Kind::Wildcard:
            return wildcardChild(parent, step.text);
        case GlobStep::Kind::AnyDepth:
            return depthChild(parent);
    }
    return 0;
}

void GlobTrie::add(const GlobSteps& steps, const GlobScope& scope, std::uint32_t request) {
    NodeId node = topOf(scope);
    std::uint32_t fixed = 0;
    for (const GlobStep& step : steps) {
        node = childFor(node, step);
        if (step.kind == GlobStep::Kind::Literal) {
            if (nodes_[node].bound == kNoBound) ++fixed;
        } else if (nodes_[node].bound == kNoBound) {
            nodes_[node].bound = fixed + scope.maxDepth;
        }
    }
    prepend(endings_, nodes_[node].endings, request);
}

std::vector<GlobTrie::NodeId> GlobTrie::start() const {
    std::vector<NodeId> active;
    for (const NodeId top : tops_) {
        active.push_back(top);
        if (nodes_[top].depthChild != 0) active.push_back(nodes_[top].depthChild);
    }
    return active;
}

void GlobTrie::reach(NodeId id, NodeSet& reached) const {
    if (reached.add(id) && nodes_[id].depthChild != 0) reach(nodes_[id].depthChild, reached);
}

void GlobTrie::reachWildcards(std::uint32_t byteNode, std::string_view name, NodeSet& reached) const {
    for (std::uint32_t i = byByteNode_[byteNode]; i != 0; i = wildcardLists_[i].next) {
        const NodeId child = wildcardLists_[i].value;
        if (compiled_[nodes_[child].pattern - 1].matches(name)) reach(child, reached);
    }
}

void GlobTrie::reachByBytes(std::uint32_t start, std::string_view name, bool backwards,
                            NodeSet& reached) const {
    reachWildcards(start, name, reached);
    std::uint32_t byteNode = start;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto byte = static_cast<unsigned char>(name[backwards ? name.size() - 1 - i : i]);
        if (!followed_[byteNode].test(byte)) return;
        byteNode = bytes_.find(byteNode, byte);
        reachWildcards(byteNode, name, reached);
    }
}

void GlobTrie::advance(std::span<const NodeId> active, std::string_view name, bool below,
                       NodeSet& reached) const {
    reached.clear();
    const std::uint32_t number = names_.find(name);
    for (const NodeId id : active) {
        const Node& node = nodes_[id];
        if (number != 0) {
            if (const NodeId child = literals_.find(id, number); child != 0) reach(child, reached);
        }
        if (node.star != 0) reach(node.star, reached);
        if (node.prefixes != 0) reachByBytes(node.prefixes, name, false, reached);
        if (node.suffixes != 0) reachByBytes(node.suffixes, name, true, reached);
        if (below && node.anyDepth) reach(id, reached);
    }
}

std::vector<GlobTrie::NodeId> GlobTrie::literalChildren(std::span<const NodeId> parents) const {
    std::vector<NodeId> children;
    for (const NodeId parent : parents) {
        for (NodeId child = nodes_[parent].firstChild; child != 0; child = nodes_[child].nextSibling) {
            if (nodes_[child].name != 0) children.push_back(child);
        }
    }
    return children;
}

std::vector<std::uint32_t> GlobTrie::requestsBelow(NodeId id) const {
    std::vector<std::uint32_t> requests;
    std::vector<NodeId> todo = {id};
    while (!todo.empty()) {
        const NodeId next = todo.back();
        todo.pop_back();
        forEachRequest(next, [&requests](std::uint32_t request) { requests.push_back(request); });
        for (NodeId child = nodes_[next].firstChild; child != 0; child = nodes_[child].nextSibling)
            todo.push_back(child);
    }
    std::ranges::sort(requests);
    requests.erase(std::unique(requests.begin(), requests.end()), requests.end());
    return requests;
}

}  // namespace toolkit::quorvis
