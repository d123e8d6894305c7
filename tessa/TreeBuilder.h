#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tessa/TreeNodes.h"

namespace tessa {

// Makes a tree of what a parser meets, in document order. Every operation may throw std::bad_alloc or
// DocumentTooLarge.
class TreeBuilder {
  public:
    explicit TreeBuilder(bool keepWhitespace) : keepWhitespace_(keepWhitespace) {}

    // `attributes` are names and values in turn, ended by a null; all in UTF-8.
    void startElement(const char* name, const char** attributes);
    void endElement();
    void text(const char* utf8, std::size_t length) { memory().texts->append(utf8, length); }

    // The innermost element that has not ended, in UTF-8; empty when there is none.
    std::string openName() const;

    // The tree; null before its root has ended. The builder is empty afterwards.
    std::unique_ptr<Node> takeRoot();

  private:
    struct Open {
        ElementNode* element;
        Node* lastChild;
    };

    TreeMemory& memory() { return *memory_; }
    const StringMap* keepAttributes(const char** attributes);
    void addChild(Node* node);
    void finishText(bool elementFollows);

    bool keepWhitespace_;
    std::unique_ptr<TreeMemory> owned_ = std::make_unique<TreeMemory>();
    TreeMemory* memory_ = owned_.get();  // owned by the root, once there is one
    std::unique_ptr<RootNode> root_;
    std::vector<Open> open_;
};

}  // namespace tessa
