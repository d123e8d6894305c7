#pragma once

#include "kest/String.h"

namespace tessa {

class Node;

// Receives the results of a NodeReader. Lines are numbered from 1; line 0 stands for the file as a whole. All functions
// return 0.
class NodeSink {
  public:
    // Called once with the tree of a well-formed document. The receiver owns it; deleting the root deletes the tree.
    virtual int onNodeTree(Node* root) = 0;
    virtual int onWarning(const kest::String& message, int line);
    virtual int onError(const kest::String& message, int line);
    // Called when the reader cannot continue.
    virtual int onCriticalError(const kest::String& message, int line);
    virtual ~NodeSink() = default;
};

}  // namespace tessa
