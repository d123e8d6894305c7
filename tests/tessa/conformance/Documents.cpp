#include "tests/tessa/conformance/Documents.h"

#include <map>

#include "kest/Text.h"
#include "tessa/DocumentReader.h"
#include "tessa/NodeReader.h"
#include "tessa/ReadError.h"
#include "tessa/TextStore.h"

namespace tessa::conformance {

namespace {

struct Sink : NodeSink {
    int onNodeTree(Node* node) override {
        tree.root.reset(node);
        return 0;
    }
    int onCriticalError(const kest::String& message, int line) override {
        tree.diagnostic = "line " + std::to_string(line) + ": " + kest::narrow(message.view());
        return 0;
    }

    Tree tree;
};

// Escapes a text as ASCII, so that it can be printed.
std::string escaped(std::wstring_view text) {
    std::string ascii;
    for (const wchar_t character : text) {
        if (character > L' ' && character <= L'~' && character != L'#') {
            ascii += static_cast<char>(character);
        } else {
            ascii += '#' + std::to_string(static_cast<long>(character)) + ';';
        }
    }
    return ascii;
}

// Recursive: the documents are shallow.
void show(const Node& node, std::string& text) {
    if (node.type() == Node::kText) {
        text += '"' + escaped(node.text()) + '"';
        return;
    }
    text += '<' + escaped(node.text());
    std::map<std::wstring, std::wstring> attributes;
    for (const Attribute& each : *node.attributes())
        attributes[each.name->text()] = TextStore::wide(each.value);
    for (const auto& [name, value] : attributes)
        text.append(" ").append(escaped(name)).append("=").append(escaped(value));
    text += '>';
    const NodeList* children = nullptr;
    if (node.getChildren(&children) != 0) return;
    for (const Node* const child : *children) show(*child, text);
    text += "</>";
}

}  // namespace

Tree treeOf(const std::filesystem::path& path, int blockSize, bool namespaces) {
    Sink sink;
    NodeReader reader(sink);
    reader.blockSize = blockSize;
    reader.keepWhitespace = true;
    reader.expandNamespaces = namespaces;
    reader.process(kest::String(kest::widen(path.string())), 0);
    return std::move(sink.tree);
}

Reading readWithExpat(const std::filesystem::path& path, bool namespaces) {
    Sink sink;
    ReaderSettings settings;
    settings.keepWhitespace = true;
    settings.expandNamespaces = namespaces;
    Reading reading = {true, ""};
    try {
        DocumentFile file(path.c_str());
        show(*tessa::readWithExpat(settings, sink, file), reading.text);
    } catch (const Fault& fault) {
        reading = {false, fault.message};
    }
    return reading;
}

Reading readDocument(const std::filesystem::path& path, int blockSize, bool namespaces) {
    const Tree tree = treeOf(path, blockSize, namespaces);
    if (tree.root == nullptr) return {false, tree.diagnostic};
    Reading reading = {true, ""};
    show(*tree.root, reading.text);
    return reading;
}

}  // namespace tessa::conformance
