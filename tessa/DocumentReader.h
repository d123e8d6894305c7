#pragma once

#include <memory>

#include "tessa/DocumentFile.h"
#include "tessa/Node.h"
#include "tessa/NodeSink.h"
#include "tessa/ReaderSettings.h"

namespace tessa {

// Reads a document into a tree and reports warnings to the sink. Throws Fault if the document is invalid,
// std::bad_alloc, and what the sink throws.
std::unique_ptr<Node> readDocument(const ReaderSettings& settings, NodeSink& sink, DocumentFile& file);

// The same, always with Expat. readDocument() reads plain documents (tessa/PlainReader.h) faster.
std::unique_ptr<Node> readWithExpat(const ReaderSettings& settings, NodeSink& sink, DocumentFile& file);

// The line of the node at `place` in a document, found without building its tree; 0 if there is no such node. Throws
// Fault and std::bad_alloc.
int findLine(const ReaderSettings& settings, DocumentFile& file, const NodePath& place);

}  // namespace tessa
