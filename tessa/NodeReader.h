#pragma once

#include "kest/String.h"
#include "tessa/Node.h"
#include "tessa/NodeSink.h"
#include "tessa/ReaderSettings.h"

namespace tessa {

// Reads XML files into node trees.
//
// Comments and processing instructions are dropped. CDATA is text, and adjacent texts form one text node. A text of only
// white space is dropped if its parent has an element, or if it is the parent's only content and has a line break. A
// document type declaration causes a warning. Nothing external is loaded; each entity that is left out for this reason
// causes a warning. All messages are printable ASCII; parts of the document in them are escaped as in kest/Escape.h.
//     struct Sink : tessa::NodeSink {
//         int onNodeTree(tessa::Node* node) override { root.reset(node); return 0; }
//         std::unique_ptr<tessa::Node> root;
//     } sink;
//     NodeReader reader(sink);
//     reader.process(kest::String(L"out.xml"), 0);
//     if (reader.status == 0) ... sink.root ...
class NodeReader : public ReaderSettings {
  public:
    explicit NodeReader(NodeSink& sink) : sink_(sink) {}

    // Reads the file at `path` and passes its tree or an error to the sink. Returns `status`. The second argument is
    // reserved and must be 0. Throws std::bad_alloc.
    int process(const kest::String& path, int reserved);

    // The line of the node at `place` in the file at `path`, which is read up to that node; 0 if there is no such node.
    // Does not call the sink. Throws std::bad_alloc.
    int lineOf(const kest::String& path, const NodePath& place) const;

    // 0 if the last file was read without error, otherwise 1.
    int status = 0;

  private:
    NodeSink& sink_;
};

}  // namespace tessa
