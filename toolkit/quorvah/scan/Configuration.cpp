#include "toolkit/quorvah/scan/Configuration.h"

#include <array>
#include <memory>
#include <optional>
#include <string_view>

#include "kest/String.h"
#include "kest/Text.h"
#include "tessa/Node.h"
#include "tessa/NodeReader.h"
#include "tessa/Utf8.h"

namespace toolkit::quorvah {

namespace {

class Sink : public tessa::NodeSink {
  public:
    explicit Sink(const std::string& path) : path_(path) {}

    int onNodeTree(tessa::Node* root) override {
        root_.reset(root);
        return 0;
    }
    int onError(const kest::String& message, int line) override { return keep(message, line); }
    int onCriticalError(const kest::String& message, int line) override { return keep(message, line); }

    const tessa::Node* root() const { return root_.get(); }
    const std::string& error() const { return error_; }

  private:
    // Such as "config.xml:3: not well-formed".
    int keep(const kest::String& message, int line) {
        error_ = path_;
        if (line > 0) error_ += ":" + std::to_string(line);
        error_ += ": " + kest::narrow(message.view());
        return 0;
    }

    const std::string& path_;
    std::unique_ptr<tessa::Node> root_;
    std::string error_;
};

std::string utf8(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t character : text) {
        std::array<char, 4> buffer;
        bytes.append(buffer.data(), tessa::narrowUtf8(character, buffer.data()));
    }
    return bytes;
}

std::optional<std::string> nameOf(const tessa::Node& element) {
    const tessa::StringMap& attributes = *element.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        kest::String name;
        kest::String value;
        attributes.getEntry(i, name, value);
        if (name.view() == L"Name") return utf8(value.view());
    }
    return std::nullopt;
}

void collect(const tessa::Node& element, Configuration& configuration) {
    if (element.name().view() != L"Group") return;
    const std::optional<std::string> name = nameOf(element);
    if (name) {
        configuration.groups.push_back(*name);
    } else {
        configuration.warnings.emplace_back("group without a name");
    }
}

// Visits all elements in document order, without recursion because they may be nested to any depth.
void collectAll(const tessa::Node& root, Configuration& configuration) {
    std::vector<const tessa::Node*> todo = {&root};
    while (!todo.empty()) {
        const tessa::Node* const node = todo.back();
        todo.pop_back();
        if (node != &root && node->nextSibling() != nullptr) todo.push_back(node->nextSibling());
        if (node->type() != tessa::Node::kElement) continue;
        collect(*node, configuration);
        const tessa::NodeList* children = nullptr;
        if (node->getChildren(&children) == 0 && !children->empty()) todo.push_back(children->front());
    }
}

}  // namespace

Configuration readConfiguration(const std::string& path) {
    Configuration configuration;
    Sink sink(path);
    tessa::NodeReader reader(sink);
    reader.refuseDoctype = true;
    if (reader.process(kest::String(kest::widen(path)), 0) != 0 || sink.root() == nullptr) {
        configuration.error = sink.error();
    } else {
        collectAll(*sink.root(), configuration);
    }
    return configuration;
}

}  // namespace toolkit::quorvah
