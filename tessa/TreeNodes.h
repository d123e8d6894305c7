// The node classes of a document's tree. All nodes except the root are in the root's arena and are never destroyed.
#pragma once

#include <memory>

#include "tessa/Arena.h"
#include "tessa/Node.h"
#include "tessa/TextStore.h"

namespace tessa {

class ElementNode : public Node {
  public:
    ElementNode(const kest::String* name, const StringMap* attributes)
        : name_(name), attributes_(attributes) {}

    int type() const override { return kElement; }
    const wchar_t* text() const override { return name_->text(); }
    const char* utf8() const override { return nullptr; }
    const kest::String& name() const override { return *name_; }
    int getChildren(const NodeList** children) const override;
    const StringMap* attributes() const override { return attributes_; }
    std::shared_ptr<TextStore> shareTexts() const override { return nullptr; }

  private:
    friend class TreeBuilder;
    const kest::String* name_;
    const StringMap* attributes_;
    NodeList children_;
};

class TextNode final : public Node {
  public:
    explicit TextNode(const char* text) : text_(text) {}

    int type() const override { return kText; }
    const wchar_t* text() const override { return TextStore::wide(text_); }
    const char* utf8() const override { return text_; }
    const kest::String& name() const override;
    int getChildren(const NodeList** children) const override;
    const StringMap* attributes() const override;
    std::shared_ptr<TextStore> shareTexts() const override { return nullptr; }

  private:
    const char* text_;
};

// The memory of a tree: its texts, which can outlive it, and its nodes.
struct TreeMemory {
    std::shared_ptr<TextStore> texts = std::make_shared<TextStore>();
    Arena nodes{texts->budget()};
};

class RootNode final : public ElementNode {
  public:
    RootNode(const kest::String* name, const StringMap* attributes, std::unique_ptr<TreeMemory> memory)
        : ElementNode(name, attributes), memory_(std::move(memory)) {}

    std::shared_ptr<TextStore> shareTexts() const override { return memory_->texts; }

  private:
    std::unique_ptr<TreeMemory> memory_;
};

// The attributes of elements without any.
extern const StringMap kNoAttributes;

}  // namespace tessa
