#pragma once

#include <cstddef>

#include "kest/String.h"
#include "tessa/Node.h"
#include "tessa/NodeSink.h"

namespace tessa {

// Reads XML files into node trees.
//
// Comments and processing instructions are dropped and CDATA is text; adjacent pieces of text make one text
// node. Text of nothing but white space is dropped when its parent holds an element, and when it holds a line
// break and is all that its parent holds. A document type declaration is a warning, nothing external is ever
// loaded, and an entity that is left out for that is a warning too. All messages are printable ASCII; what they
// show of the document is written as in kest/Shown.h.
//     struct Sink : tessa::NodeSink { std::unique_ptr<tessa::Node> root; int onNodeTree(tessa::Node* n)
//     override {...} }; NodeReader reader(sink); reader.process(kest::String(L"out.xml"), 0); if
//     (reader.status == 0) ... sink.root ...
class NodeReader {
  public:
    explicit NodeReader(NodeSink& sink) : sink_(sink) {}

    // Reads the file at `path` and tells the sink of the tree, or of what is wrong. Returns `status`. The
    // second argument is reserved and must be 0. Throws std::bad_alloc when memory runs out.
    int process(const kest::String& path, int reserved);

    // The line of the node at `place` in the file at `path`, which is read anew up to there; 0 when there is none.
    // The sink is told nothing. Throws std::bad_alloc when memory runs out.
    int lineOf(const kest::String& path, const Place& place) const;

    // 0 after a file that was read without error, 1 after one that was not.
    int status = 0;

    // Settings, to be changed before process().
    int blockSize = 0;              // bytes read at a time; 0 for the reader's own choice
    bool keepWhitespace = false;    // keep text of nothing but white space everywhere
    bool refuseDoctype = false;     // a document type declaration is a critical error
    bool expandNamespaces = false;  // names become "namespace|name"

  private:
    NodeSink& sink_;
};

}  // namespace tessa
