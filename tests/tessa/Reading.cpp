#include "tests/tessa/Reading.h"

#include <gtest/gtest.h>

#include <sstream>

#include "kest/Text.h"

namespace tessa::test {

std::ostream& operator<<(std::ostream& stream, const Diagnostic& diagnostic) {
    return stream << "{kind " << static_cast<int>(diagnostic.kind) << ", line " << diagnostic.line << ", "
                  << kest::narrow(diagnostic.message) << "}";
}

int Sink::onNodeTree(Node* node) {
    root.reset(node);
    ++trees;
    return 0;
}

int Sink::onWarning(const kest::String& message, int line) {
    diagnostics.push_back({Kind::kWarning, message.text(), line});
    return 0;
}

int Sink::onError(const kest::String& message, int line) {
    diagnostics.push_back({Kind::kError, message.text(), line});
    return 0;
}

int Sink::onCriticalError(const kest::String& message, int line) {
    diagnostics.push_back({Kind::kCritical, message.text(), line});
    return 0;
}

Document readFile(const std::filesystem::path& path, const Settings& settings) {
    Sink sink;
    NodeReader reader(sink);
    reader.blockSize = settings.blockSize;
    reader.keepWhitespace = settings.keepWhitespace;
    reader.refuseDoctype = settings.refuseDoctype;
    reader.expandNamespaces = settings.expandNamespaces;
    EXPECT_EQ(reader.status, 0);
    EXPECT_EQ(reader.process(kest::String(kest::widen(path.string())), 0), reader.status);
    EXPECT_EQ(sink.trees, reader.status == 0 ? 1 : 0);
    EXPECT_EQ(sink.root != nullptr, reader.status == 0);
    return {reader.status, std::move(sink.root), std::move(sink.diagnostics)};
}

Document readText(const std::string& xml, const Settings& settings) {
    const zavtest::ScratchDir directory;
    return readFile(directory.write("text.xml", xml), settings);
}

std::wstring shown(const Node* node) {
    if (node == nullptr) return L"";
    if (node->type() == Node::kText) return L'"' + std::wstring(node->text()) + L'"';
    std::wstring result = node->text();
    kest::String name;
    kest::String value;
    for (int i = 0; node->attributes()->getEntry(i, name, value) == 0; ++i) {
        result.append(L"[").append(name.text()).append(L"='").append(value.text()).append(L"']");
    }
    const NodeList* children = nullptr;
    if (node->getChildren(&children) != 0 || children->empty()) return result;
    result += L"(";
    for (const Node* const child : *children)
        result += (child == children->front() ? L"" : L" ") + shown(child);
    return result + L")";
}

std::wstring treeOf(const std::string& xml, const Settings& settings) {
    const Document document = readText(xml, settings);
    return document.diagnostics.empty() ? shown(document.root.get()) : document.diagnostics.front().message;
}

std::string written(const Node& node, int mode) {
    std::ostringstream out;
    node.write(out, mode);
    return out.str();
}

}  // namespace tessa::test
