#pragma once

#include <memory>

#include "tessa/InputFile.h"
#include "tessa/Node.h"
#include "tessa/NodeReader.h"

namespace tessa {

// Reads the document in a file into a tree; warnings go to the sink. Throws Fault for what is
// wrong with the document, std::bad_alloc when memory runs out, and what the sink throws.
std::unique_ptr<Node> readDocument(const NodeReader& settings, NodeSink& sink, InputFile& file);

// The line of the node that stands at `place` in the tree of that document, without a tree; 0 when there is none.
// Throws Fault and std::bad_alloc.
int findLine(const NodeReader& settings, InputFile& file, const Place& place);

}  // namespace tessa
