#pragma once

#include "tessa/Node.h"

namespace zav {

// The children of a node; null if the node has none, is a text, or is null.
inline const tessa::NodeList* childrenOf(const tessa::Node* node) {
    const tessa::NodeList* children = nullptr;
    if (node == nullptr || node->getChildren(&children) != 0 || children == nullptr || children->empty())
        return nullptr;
    return children;
}

inline bool isElement(const tessa::Node* node) {
    return node->type() == tessa::Node::kElement;
}

}  // namespace zav
