// Node::write. Uses a stack of its own instead of recursion, as documents may have any depth.
#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>
#include <vector>

#include "tessa/Node.h"
#include "tessa/Utf8.h"

namespace tessa {

namespace {

// Deeper levels are not indented further, or most of a deep document would be blanks.
constexpr std::size_t kMaxIndentLevel = 100;

class XmlWriter {
  public:
    XmlWriter(std::ostream& out, bool indented) : out_(out), indented_(indented) {}

    void write(const Node& top) {
        enter(top);
        while (!open_.empty()) {
            const Node* const child = open_.back().nextChild;
            if (child == nullptr) {
                leave();
                continue;
            }
            open_.back().nextChild = child->nextSibling();
            if (open_.back().onLines) breakLine(open_.size());
            enter(*child);
        }
        flush();
    }

  private:
    struct Open {
        const Node* node;
        const Node* nextChild;
        bool onLines;  // whether each child is written on a line of its own
    };

    void enter(const Node& node) {
        if (node.type() == Node::kText) {
            escape(node.utf8(), false);
            return;
        }
        put('<');
        putName(node.text());
        writeAttributes(*node.attributes());
        const NodeList* children = nullptr;
        node.getChildren(&children);
        if (children->empty()) {
            put("/>");
            return;
        }
        put('>');
        const bool parentOnLines = open_.empty() || open_.back().onLines;
        open_.push_back({&node, children->front(), indented_ && parentOnLines && onlyElements(*children)});
    }

    void leave() {
        const Open last = open_.back();
        open_.pop_back();
        if (last.onLines) breakLine(open_.size());
        put("</");
        putName(last.node->text());
        put('>');
    }

    static bool onlyElements(const NodeList& children) {
        for (const Node* const child : children) {
            if (child->type() != Node::kElement) return false;
        }
        return true;
    }

    void breakLine(std::size_t level) {
        put('\n');
        for (std::size_t blanks = 2 * std::min(level, kMaxIndentLevel); blanks > 0; --blanks) put(' ');
    }

    void writeAttributes(const StringMap& attributes) {
        for (const Attribute& attribute : attributes) {
            put(' ');
            putName(attribute.name->text());
            put("=\"");
            escape(attribute.value, true);
            put('"');
        }
    }

    void putName(const wchar_t* text) {
        for (; *text != L'\0'; ++text) putCodePoint(*text);
    }

    // White space that a reader would normalise is written as a character reference.
    void escape(const char* text, bool inAttribute) {
        for (; *text != '\0'; ++text) {
            switch (*text) {
                case '&':
                    put("&amp;");
                    break;
                case '<':
                    put("&lt;");
                    break;
                case '>':
                    put("&gt;");
                    break;
                case '\r':
                    put("&#13;");
                    break;
                case '"':
                    put(inAttribute ? "&quot;" : "\"");
                    break;
                case '\n':
                    put(inAttribute ? "&#10;" : "\n");
                    break;
                case '\t':
                    put(inAttribute ? "&#9;" : "\t");
                    break;
                default:
                    put(*text);
            }
        }
    }

    void putCodePoint(wchar_t codePoint) {
        if (codePoint < 0x80) {
            put(static_cast<char>(codePoint));
            return;
        }
        char bytes[4];
        put({bytes, static_cast<std::size_t>(narrowUtf8(codePoint, bytes) - bytes)});
    }

    void put(std::string_view bytes) {
        for (const char byte : bytes) put(byte);
    }

    void put(char byte) {
        if (used_ == buffer_.size()) flush();
        buffer_[used_++] = byte;
    }

    void flush() {
        out_.write(buffer_.data(), static_cast<std::streamsize>(used_));
        used_ = 0;
    }

    std::ostream& out_;
    bool indented_;
    std::vector<Open> open_;
    // Writing single bytes to the stream would take more time than everything else.
    std::array<char, 2048> buffer_;
    std::size_t used_ = 0;
};

}  // namespace

void Node::write(std::ostream& out, int mode) const {
    XmlWriter(out, mode == kIndented).write(*this);
}

}  // namespace tessa
