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
class TextStore;

// The place of a node in a tree: at each level below the root, the index of the ancestor or of the node itself among its
// siblings. The root's place is empty.
using NodePath = std::vector<std::size_t>;

// The children of an element in document order, for range-based for loops.
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

// An element or a text of a document. The root owns the memory of all nodes: delete only the root.
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

    // The name of an element or the text of a text node; NUL-terminated. A text is widened when it is first requested.
    virtual const wchar_t* text() const = 0;

    // The text of a text node in UTF-8; NUL-terminated. Null for an element.
    virtual const char* utf8() const = 0;

    // The name of an element; empty for a text node.
    virtual const kest::String& name() const = 0;

    // For an element: stores its list in *children and returns 0. For a text: returns -1 and leaves *children unchanged.
    virtual int getChildren(const NodeList** children) const = 0;

    // The attributes of an element; empty for a text node.
    virtual const StringMap* attributes() const = 0;

    // Shares ownership of all texts and names of the document, so that they can outlive the tree. Null unless this is
    // the root.
    virtual std::shared_ptr<TextStore> shareTexts() const = 0;

    // Writes the node and its descendants as escaped XML in UTF-8. kIndented writes each child of an element that has
    // only element children on a line of its own, indented by two blanks per level.
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
