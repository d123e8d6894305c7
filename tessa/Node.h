#pragma once

#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <memory>
#include <vector>

#include "kest/String.h"
#include "tessa/StringMap.h"

namespace tessa {

class Node;

// Where a node stands: its index among the children of its parent, before that the one of its parent, and so on. The
// root's place is empty.
using Place = std::vector<std::size_t>;

// The children of an element in document order, to be walked with a range-based for loop.
class NodeList {
  public:
    class Iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Node*;
        using difference_type = std::ptrdiff_t;
        using pointer = Node* const*;
        using reference = Node*;

        explicit Iterator(Node* node) : node_(node) {}
        Node* operator*() const { return node_; }
        Iterator& operator++();
        bool operator==(const Iterator& other) const { return node_ == other.node_; }

      private:
        Node* node_;
    };

    bool empty() const { return first_ == nullptr; }
    Node* front() const { return first_; }
    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(nullptr); }

  private:
    friend class TreeBuilder;
    Node* first_ = nullptr;
};

// One element or one text of a document. All nodes live in the document's own memory, which belongs to the
// root: delete the root and nothing else.
class Node {
  public:
    static constexpr int kElement = 0;
    static constexpr int kText = 1;

    static constexpr int kCompact = 1;
    static constexpr int kIndented = 2;

    virtual ~Node() = default;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    virtual int type() const = 0;

    // An element's name or a text node's text; NUL-terminated.
    virtual const wchar_t* text() const = 0;

    // An element's name; empty for a text node.
    virtual const kest::String& name() const = 0;

    // An element: 0, and *children is its own list. A text node: -1, and *children stays.
    virtual int getChildren(const NodeList** children) const = 0;

    // An element's attributes; empty for a text node.
    virtual const StringMap* attributes() const = 0;

    // The texts and names of the whole document, which live as long as what is returned, even when the tree
    // is gone; from the root only, null from any other node.
    virtual std::shared_ptr<const void> shareTexts() const = 0;

    // Writes the node with all below it as XML, escaped, in UTF-8. kIndented puts each child on a line of its
    // own, two blanks a level, where an element holds only elements.
    virtual void write(std::ostream& out, int mode) const;

    Node* nextSibling() const { return next_; }

  protected:
    Node() = default;

  private:
    friend class TreeBuilder;
    Node* next_ = nullptr;
};

inline NodeList::Iterator& NodeList::Iterator::operator++() {
    node_ = node_->nextSibling();
    return *this;
}

}  // namespace tessa
