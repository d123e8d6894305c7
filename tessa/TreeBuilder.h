#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "tessa/PlainReader.h"
#include "tessa/TreeNodes.h"

namespace tessa {

// Builds a tree from a parser's events. Every operation may throw std::bad_alloc or DocumentTooLarge.
class TreeBuilder final : public PlainSink {
  public:
    explicit TreeBuilder(bool keepWhitespace) : keepWhitespace_(keepWhitespace) {}

    // The events. They return true.
    bool startElement(std::string_view name, const std::vector<AttributeText>& attributes) override;
    bool endElement() override;
    bool text(std::string_view piece) override {
        memory().texts->append(piece.data(), piece.size());
        return true;
    }

    // Empty if no element is open.
    std::string_view openName() const override {
        return open_.empty() ? std::string_view() : open_.back().name;
    }
    std::string_view expectedName() const override { return memory_->texts->expectedName(); }

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
