#include "toolkit/quorvis/language/Element.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/machine/xml/XmlText.h"

namespace toolkit::quorvis {

namespace {

constexpr unsigned kMaxDepth = 64;
constexpr std::size_t kMaxNodes = 10'000;
constexpr std::size_t kMaxAttributes = 1'000;

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

    // Of the most recent element.
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
        if (++nodesOfChild_ > kMaxNodes)
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
        if (count > kMaxAttributes) throw TooManyElements{"more than 1000 attributes"};
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

    // A child of the root is complete.
    void finish(const Element& child) {
        visitor_.onChild(child);
        nodes_.release();
        nodesOfChild_ = 0;
    }

    // Offsets only increase, so each line is counted once.
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
    // The nodes of one child of the root. Most fit into the buffer, which is reused for each child.
    std::array<std::byte, 32768> firstNodes_;
    std::pmr::monotonic_buffer_resource nodes_{firstNodes_.data(), firstNodes_.size()};
    std::size_t nodesOfChild_ = 0;
    std::vector<Open> open_;
    std::size_t verbatimLevel_ = 0;  // depth of the open verbatim element; 0 when none is open
    std::string text_;
    std::size_t offset_ = 0;
    std::size_t textOffset_ = 0;
    std::size_t counted_ = 0;
    std::uint32_t line_ = 1;
};

bool isAscii(std::string_view name) {
    return std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// False when a name is not ASCII. The reader limits the depth of the recursion.
bool append(std::string& xml, const Element& element) {
    if (element.isText()) {
        appendXmlText(xml, element.text);
        return true;
    }
    if (!isAscii(element.name)) return false;
    xml.append("<").append(element.name);
    for (const ElementAttribute& attribute : element.attributes) {
        if (!isAscii(attribute.name)) return false;
        appendXmlAttribute(xml, attribute.name, attribute.value);
    }
    if (element.firstChild == nullptr) {
        xml += "/>";
        return true;
    }
    xml += '>';
    for (const Element* child = element.firstChild; child != nullptr; child = child->next) {
        if (!append(xml, *child)) return false;
    }
    xml.append("</").append(element.name).append(">");
    return true;
}

}  // namespace

std::optional<XmlFault> readElements(const DocumentText& document, std::string_view verbatim,
                                     std::pmr::memory_resource& texts, ElementVisitor& visitor) {
    Builder builder(document, verbatim, texts, visitor);
    try {
        return parseXml(document, kMaxDepth, builder);
    } catch (const TooManyElements& excess) {
        return XmlFault{builder.offset(), excess.reason};
    }
}

std::optional<std::string> innerXml(const Element& element, bool (*skips)(const Element& child)) {
    constexpr std::size_t kTypicalSize = 250;
    std::string xml;
    xml.reserve(kTypicalSize);
    for (const Element* child = element.firstChild; child != nullptr; child = child->next) {
        if (skips != nullptr && skips(*child)) continue;
        if (!append(xml, *child)) return std::nullopt;
    }
    return xml;
}

std::string quoted(std::string_view text) {
    constexpr std::size_t kMaxSize = 80;
    std::string result = "\"";
    result += text.substr(0, kMaxSize);
    // Do not cut a UTF-8 character in two.
    if (text.size() > kMaxSize) {
        while ((static_cast<unsigned char>(text[result.size() - 1]) & 0xC0U) == 0x80) result.pop_back();
        result += "...";
    }
    return result += '"';
}

void reportUnknownAttribute(const Element& element, std::string_view name, Diagnostics& diagnostics) {
    diagnostics.problem(element, "unknown attribute " + quoted(name) + " of " + std::string(element.name));
}

void reportMissingAttribute(const Element& element, std::string_view name, Diagnostics& diagnostics) {
    diagnostics.problem(element, std::string(element.name) + " lacks the attribute " + quoted(name));
}

void reportMisplaced(const Element& parent, const Element& child, Diagnostics& diagnostics) {
    std::string text =
        child.isText() ? "text " + quoted(child.text) : "unknown or misplaced element " + quoted(child.name);
    diagnostics.problem(child, text.append(" in ").append(parent.name));
}

void requireNoChildren(const Element& element, Diagnostics& diagnostics) {
    for (const Element* child = element.firstChild; child != nullptr; child = child->next)
        reportMisplaced(element, *child, diagnostics);
}

}  // namespace toolkit::quorvis
