// Reading the documents of the conformance suite.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tessa/Node.h"

namespace tessa::conformance {

struct Tree {
    std::unique_ptr<Node> root;  // null if the document is refused
    std::string diagnostic;      // the reason
};

// blockSize as in NodeReader.
Tree treeOf(const std::filesystem::path& path, int blockSize = 0, bool namespaces = false);

// A document's elements, sorted attributes and texts in one line, or the reason why it is refused.
struct Reading {
    bool good;
    std::string text;
};

Reading readDocument(const std::filesystem::path& path, int blockSize, bool namespaces);

// The same with Expat, also if the document is plain.
Reading readWithExpat(const std::filesystem::path& path, bool namespaces);

}  // namespace tessa::conformance
