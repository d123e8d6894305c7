// Node::write: a tree as XML text. It keeps its own stack, for documents may be of any depth.
#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "tessa/Node.h"
#include "tessa/Utf8.h"

namespace tessa {

namespace {

// Lines of deeper levels begin here too, else the blanks of a deep document would outweigh it.
constexpr std::size_t kDeepestIndent = 100;

class Writer {
  public:
    Writer(std::ostream& out, bool indented) : out_(out), indented_(indented) {}

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
    }

  private:
    struct Open {
        const Node* node;
        const Node* nextChild;
        bool onLines;  // each child stands on a line of its own
    };

    void enter(const Node& node) {
        if (node.type() == Node::kText) {
            escape(node.text(), false);
            return;
        }
        out_ << '<';
        plain(node.text());
        writeAttributes(*node.attributes());
        const NodeList* children = nullptr;
        node.getChildren(&children);
        if (children->empty()) {
            out_ << "/>";
            return;
        }
        out_ << '>';
        const bool parentOnLines = open_.empty() || open_.back().onLines;
        open_.push_back({&node, children->front(), indented_ && parentOnLines && onlyElements(*children)});
    }

    void leave() {
        const Open last = open_.back();
        open_.pop_back();
        if (last.onLines) breakLine(open_.size());
        out_ << "</";
        plain(last.node->text());
        out_ << '>';
    }

    static bool onlyElements(const NodeList& children) {
        for (const Node* const child : children) {
            if (child->type() != Node::kElement) return false;
        }
        return true;
    }

    void breakLine(std::size_t level) {
        out_ << '\n' << std::string(2 * std::min(level, kDeepestIndent), ' ');
    }

    void writeAttributes(const StringMap& attributes) {
        kest::String name;
        kest::String value;
        for (int i = 0; attributes.getEntry(i, name, value) == 0; ++i) {
            out_ << ' ';
            plain(name.text());
            out_ << "=\"";
            escape(value.text(), true);
            out_ << '"';
        }
    }

    void plain(const wchar_t* text) {
        for (; *text != L'\0'; ++text) put(*text);
    }

    // White space that a reader would change on its way is written as a reference.
    void escape(const wchar_t* text, bool inAttribute) {
        for (; *text != L'\0'; ++text) {
            switch (*text) {
                case L'&':
                    out_ << "&amp;";
                    break;
                case L'<':
                    out_ << "&lt;";
                    break;
                case L'>':
                    out_ << "&gt;";
                    break;
                case L'\r':
                    out_ << "&#13;";
                    break;
                case L'"':
                    out_ << (inAttribute ? "&quot;" : "\"");
                    break;
                case L'\n':
                    out_ << (inAttribute ? "&#10;" : "\n");
                    break;
                case L'\t':
                    out_ << (inAttribute ? "&#9;" : "\t");
                    break;
                default:
                    put(*text);
            }
        }
    }

    void put(wchar_t codePoint) {
        char bytes[4];
        out_.write(bytes, narrowUtf8(codePoint, bytes) - bytes);
    }

    std::ostream& out_;
    bool indented_;
    std::vector<Open> open_;
};

}  // namespace

void Node::write(std::ostream& out, int mode) const {
    Writer(out, mode == kIndented).write(*this);
}

}  // namespace tessa
