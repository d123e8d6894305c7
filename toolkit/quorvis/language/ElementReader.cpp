#include "toolkit/quorvis/language/ElementReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace toolkit::quorvis {

namespace {

constexpr unsigned kDeepest = 64;
constexpr std::size_t kMostNodes = 10'000;
constexpr std::size_t kMostAttributes = 1'000;

std::string_view copy(std::string_view text, std::pmr::memory_resource& memory) {
    if (text.empty()) return {};
    auto* const bytes = static_cast<char*>(memory.allocate(text.size(), 1));
    std::memcpy(bytes, text.data(), text.size());
    return {bytes, text.size()};
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

class Builder : public XmlHandler {
  public:
    Builder(const DocumentText& document, std::string_view verbatim, std::pmr::memory_resource& texts,
            ElementVisitor& visitor)
        : document_(document.bytes), verbatim_(verbatim), texts_(texts), visitor_(visitor) {}

    // Where the latest element starts.
    std::size_t offset() const { return offset_; }

    void onStart(std::string_view name, const char* const* attributes, std::size_t offset) override {
        offset_ = offset;
        flushText();
        Element& element = *makeElement(offset);
        element.name = copy(name, nodes_);
        element.attributes = makeAttributes(attributes);
        if (open_.empty()) {
            visitor_.onRoot(element);
        } else {
            append(element);
        }
        if (verbatimLevel_ == 0 && name == verbatim_) verbatimLevel_ = open_.size() + 1;
        open_.push_back({&element, nullptr});
    }

    void onEnd() override {
        flushText();
        if (verbatimLevel_ == open_.size()) verbatimLevel_ = 0;
        const Element* const ended = open_.back().element;
        open_.pop_back();
        if (open_.size() == 1) finish(*ended);
    }

    void onText(std::string_view text, std::size_t offset) override {
        if (text_.empty()) {
            if (verbatimLevel_ == 0 && isBlank(text)) return;
            textOffset_ = offset;
        }
        text_ += text;
    }

  private:
    struct Open {
        Element* element;
        Element* lastChild;
    };

    Element* makeElement(std::size_t offset) {
        if (++nodesOfChild_ > kMostNodes)
            throw TooManyElements{"more than 10000 elements and texts in one element"};
        auto* const element = ::new (nodes_.allocate(sizeof(Element), alignof(Element))) Element();
        element->offset = static_cast<std::uint32_t>(offset);
        element->line = lineAt(offset);
        return element;
    }

    std::span<const ElementAttribute> makeAttributes(const char* const* attributes) {
        std::size_t count = 0;
        while (attributes[2 * count] != nullptr) ++count;
        if (count == 0) return {};
        if (count > kMostAttributes) throw TooManyElements{"more than 1000 attributes"};
        auto* const made = static_cast<ElementAttribute*>(
            nodes_.allocate(count * sizeof(ElementAttribute), alignof(ElementAttribute)));
        for (std::size_t i = 0; i < count; ++i) {
            std::construct_at(made + i, ElementAttribute{copy(attributes[2 * i], nodes_),
                                                         copy(attributes[2 * i + 1], texts_)});
        }
        return {made, count};
    }

    void append(Element& element) {
        Open& parent = open_.back();
        if (open_.size() > 1) {
            (parent.lastChild == nullptr ? parent.element->firstChild : parent.lastChild->next) = &element;
        }
        parent.lastChild = &element;
    }

    void flushText() {
        if (text_.empty()) return;
        Element& element = *makeElement(textOffset_);
        element.text = copy(text_, texts_);
        text_.clear();
        append(element);
        if (open_.size() == 1) finish(element);
    }

    // The child of the root is whole.
    void finish(const Element& child) {
        visitor_.onChild(child);
        nodes_.release();
        nodesOfChild_ = 0;
    }

    // Offsets only grow, so each line is counted once.
    std::uint32_t lineAt(std::size_t offset) {
        const auto* const end = document_.data() + std::min(offset, document_.size());
        for (const auto* from = document_.data() + counted_; from < end; ++from) {
            from = static_cast<const char*>(std::memchr(from, '\n', static_cast<std::size_t>(end - from)));
            if (from == nullptr) break;
            ++line_;
        }
        counted_ = static_cast<std::size_t>(end - document_.data());
        return line_;
    }

    std::string_view document_;
    std::string_view verbatim_;
    std::pmr::memory_resource& texts_;
    ElementVisitor& visitor_;
    // Of one child of the root; the first part of it is used again and again.
    std::array<std::byte, 32768> firstNodes_;
    std::pmr::monotonic_buffer_resource nodes_{firstNodes_.data(), firstNodes_.size()};
    std::size_t nodesOfChild_ = 0;
    std::vector<Open> open_;
    std::size_t verbatimLevel_ = 0;  // how many elements are open within the verbatim one; 0 outside
    std::string text_;
    std::size_t offset_ = 0;
    std::size_t textOffset_ = 0;
    std::size_t counted_ = 0;
    std::uint32_t line_ = 1;
};

}  // namespace

std::optional<XmlFault> readElements(const DocumentText& document, std::string_view verbatim,
                                     std::pmr::memory_resource& texts, ElementVisitor& visitor) {
    Builder builder(document, verbatim, texts, visitor);
    try {
        return parseXml(document, kDeepest, builder);
    } catch (const TooManyElements& excess) {
        return XmlFault{builder.offset(), excess.text};
    }
}

}  // namespace toolkit::quorvis
