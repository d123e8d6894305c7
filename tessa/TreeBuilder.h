#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tessa/TreeNodes.h"

namespace tessa {

// Builds a tree from a parser's events. Every operation may throw std::bad_alloc or DocumentTooLarge.
class TreeBuilder {
  public:
    explicit TreeBuilder(bool keepWhitespace) : keepWhitespace_(keepWhitespace) {}

    // `attributes` are alternating names and values, ended by a null pointer. All texts are UTF-8.
    void startElement(const char* name, const char** attributes);
    void endElement();
    void text(const char* utf8, std::size_t length) { memory().texts->append(utf8, length); }

    // The name of the innermost open element in UTF-8; empty if there is none.
    std::string openName() const;

    // Releases the tree; null if its root has not ended. The builder must not be used afterwards.
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
    TreeMemory* memory_ = owned_.get();  // owned by the root once it exists
    std::unique_ptr<RootNode> root_;
    std::vector<Open> open_;
};

}  // namespace tessa
