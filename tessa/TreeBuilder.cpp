#include "tessa/TreeBuilder.h"

#include <algorithm>
#include <new>
#include <string_view>

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

bool TreeBuilder::startElement(std::string_view name, const std::vector<AttributeText>& attributes) {
    memory().texts->budget().charge(kLevelCost);
    finishText(true);
    const TextStore::Name* const interned = memory().texts->intern(name);
    const StringMap* const map = keepAttributes(attributes);
    ElementNode* element = nullptr;
    if (root_ == nullptr) {
        root_ = std::make_unique<RootNode>(&interned->text, map, std::move(owned_));
        element = root_.get();
    } else {
        element = new (memory().nodes.allocate(sizeof(ElementNode))) ElementNode(&interned->text, map);
        addChild(element);
    }
    open_.push_back({interned->utf8, element, nullptr});
    return true;
}

bool TreeBuilder::endElement() {
    finishText(false);
    open_.pop_back();
    memory().texts->budget().refund(kLevelCost);
    return true;
}

std::unique_ptr<Node> TreeBuilder::takeRoot() {
    return open_.empty() ? std::unique_ptr<Node>(std::move(root_)) : nullptr;
}

const StringMap* TreeBuilder::keepAttributes(const std::vector<AttributeText>& attributes) {
    if (attributes.empty()) return &kNoAttributes;
    Arena& nodes = memory().nodes;
    auto* const kept = static_cast<Attribute*>(nodes.allocate(attributes.size() * sizeof(Attribute)));
    TextStore& texts = *memory().texts;
    std::transform(attributes.begin(), attributes.end(), kept, [&texts](const AttributeText& attribute) {
        return Attribute{&texts.intern(attribute.name)->text, texts.add(attribute.value)};
    });
    return new (nodes.allocate(sizeof(StringMap))) StringMap(kept, static_cast<int>(attributes.size()));
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
