// What the tests of the XML reader share: reading a text, and showing what came of it.
#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tessa/Node.h"
#include "tessa/NodeReader.h"
#include "tests/support/ScratchDir.h"

namespace tessa::test {

enum class Kind { kWarning, kError, kCritical };

struct Complaint {
    Kind kind;
    std::wstring message;
    int line;

    bool operator==(const Complaint&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Complaint& complaint);

struct Sink : NodeSink {
    int onNodeTree(Node* node) override;
    int onWarning(const kest::String& message, int line) override;
    int onError(const kest::String& message, int line) override;
    int onCriticalError(const kest::String& message, int line) override;

    std::unique_ptr<Node> root;
    int trees = 0;
    std::vector<Complaint> complaints;
};

struct Settings {
    int blockSize = 0;
    bool keepWhitespace = false;
    bool refuseDoctype = false;
    bool expandNamespaces = false;
};

struct Document {
    int status;
    std::unique_ptr<Node> root;
    std::vector<Complaint> complaints;
};

// Also checks that the tree is delivered once when the status is 0, and not at all when it is not.
Document readFile(const std::filesystem::path& path, const Settings& settings = {});
Document readText(const std::string& xml, const Settings& settings = {});

// A tree by its own facilities, such as L"a[x='1'](b \"text\")"; nothing for null. Recursive: for shallow
// trees.
std::wstring shown(const Node* node);
// The same of a text that is well-formed and gives no complaint; the first complaint of any other.
std::wstring treeOf(const std::string& xml, const Settings& settings = {});

std::string written(const Node& node, int mode);

}  // namespace tessa::test
