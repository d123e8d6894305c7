#include "tessa/TreeBuilder.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "tessa/Utf8.h"

namespace tessa {

namespace {

// The memory that an open element takes in the builder and in the parser.
constexpr std::size_t kLevelCost = 256;

bool isWhitespace(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) {
        return character == ' ' || character == '\t' || character == '\n' || character == '\r';
    });
}

}  // namespace

void TreeBuilder::startElement(const char* name, const char** attributes) {
    memory().texts->budget().charge(kLevelCost);
    finishText(true);
    const kest::String* const internedName = memory().texts->intern(name);
    const StringMap* const map = keepAttributes(attributes);
    ElementNode* element = nullptr;
    if (root_ == nullptr) {
        root_ = std::make_unique<RootNode>(internedName, map, std::move(owned_));
        element = root_.get();
    } else {
        element = new (memory().nodes.allocate(sizeof(ElementNode))) ElementNode(internedName, map);
        addChild(element);
    }
    open_.push_back({element, nullptr});
}

void TreeBuilder::endElement() {
    finishText(false);
    open_.pop_back();
    memory().texts->budget().refund(kLevelCost);
}

std::string TreeBuilder::openName() const {
    std::string name;
    if (open_.empty()) return name;
    for (const wchar_t* character = open_.back().element->text(); *character != L'\0'; ++character) {
        char bytes[4];
        name.append(bytes, narrowUtf8(*character, bytes));
    }
    return name;
}

std::unique_ptr<Node> TreeBuilder::takeRoot() {
    return open_.empty() ? std::unique_ptr<Node>(std::move(root_)) : nullptr;
}

const StringMap* TreeBuilder::keepAttributes(const char** attributes) {
    if (*attributes == nullptr) return &kNoAttributes;
    std::size_t count = 0;
    while (attributes[2 * count] != nullptr) ++count;
    auto* const kept = static_cast<Attribute*>(memory().nodes.allocate(count * sizeof(Attribute)));
    TextStore& texts = *memory().texts;
    for (std::size_t i = 0; i < count; ++i) {
        kept[i] = {texts.intern(attributes[2 * i]), texts.add(attributes[2 * i + 1])};
    }
    return new (memory().nodes.allocate(sizeof(StringMap))) StringMap(kept, static_cast<int>(count));
}

void TreeBuilder::addChild(Node* node) {
    Open& parent = open_.back();
    (parent.lastChild == nullptr ? parent.element->children_.first_ : parent.lastChild->next_) = node;
    parent.lastChild = node;
}

// A text of only white space is layout, not content, if it has element siblings or contains a line break.
void TreeBuilder::finishText(bool elementFollows) {
    TextStore& texts = *memory().texts;
    if (!texts.isOpen()) return;
    if (!keepWhitespace_ && isWhitespace(texts.open())) {
        const bool besideElement = elementFollows || open_.back().lastChild != nullptr;
        if (besideElement || texts.open().find('\n') != std::string_view::npos) {
            texts.drop();
            return;
        }
    }
    const char* const text = texts.finish();
    addChild(new (memory().nodes.allocate(sizeof(TextNode))) TextNode(text));
}

}  // namespace tessa
