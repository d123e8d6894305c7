// Support for the tests of the XML reader: reading a text and describing the result.
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

struct Diagnostic {
    Kind kind;
    std::wstring message;
    int line;

    bool operator==(const Diagnostic&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Diagnostic& diagnostic);

struct Sink : NodeSink {
    int onNodeTree(Node* node) override;
    int onWarning(const kest::String& message, int line) override;
    int onError(const kest::String& message, int line) override;
    int onCriticalError(const kest::String& message, int line) override;

    std::unique_ptr<Node> root;
    int trees = 0;
    std::vector<Diagnostic> diagnostics;
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
    std::vector<Diagnostic> diagnostics;
};

// Also checks that a tree is delivered exactly once if the status is 0, and never otherwise.
Document readFile(const std::filesystem::path& path, const Settings& settings = {});
Document readText(const std::string& xml, const Settings& settings = {});

// Describes a tree, such as L"a[x='1'](b \"text\")"; empty for null. Recursive, so only for shallow trees.
std::wstring shown(const Node* node);
// The same for a text. If the reader reports a warning or an error, returns the first of these instead.
std::wstring treeOf(const std::string& xml, const Settings& settings = {});

std::string written(const Node& node, int mode);

}  // namespace tessa::test
