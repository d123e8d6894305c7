#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "tessa/TreeNodes.h"

namespace tessa {

// An attribute as it stands in the document, in UTF-8.
struct AttributeText {
    std::string_view name;
    std::string_view value;
};

// Builds a tree from a parser's events. Every operation may throw std::bad_alloc or DocumentTooLarge.
class TreeBuilder {
  public:
    explicit TreeBuilder(bool keepWhitespace) : keepWhitespace_(keepWhitespace) {}

    // All texts are UTF-8.
    void startElement(std::string_view name, const std::vector<AttributeText>& attributes);
    void endElement();
    void text(const char* utf8, std::size_t length) { memory().texts->append(utf8, length); }

    // The number of open elements.
    std::size_t depth() const { return open_.size(); }

    // The name of the innermost open element in UTF-8; empty if there is none.
    std::string_view openName() const { return open_.empty() ? std::string_view() : open_.back().name; }

    // The name that the next element probably has; may be empty.
    std::string_view expectedName() const { return memory_->texts->expectedName(); }

    // Releases the tree; null if its root has not ended. The builder must not be used afterwards.
    std::unique_ptr<Node> takeRoot();

  private:
    struct Open {
        std::string_view name;
        ElementNode* element;
        Node* lastChild;
    };

    TreeMemory& memory() { return *memory_; }
    const StringMap* keepAttributes(const std::vector<AttributeText>& attributes);
    void addChild(Node* node);
    void finishText(bool elementFollows);

    bool keepWhitespace_;
    std::unique_ptr<TreeMemory> owned_ = std::make_unique<TreeMemory>();
    TreeMemory* memory_ = owned_.get();  // owned by the root once it exists
    std::unique_ptr<RootNode> root_;
    std::vector<Open> open_;
};

}  // namespace tessa
