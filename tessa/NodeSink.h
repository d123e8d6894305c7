#pragma once

#include "kest/String.h"

namespace tessa {

class Node;

// Receives what a NodeReader finds. Lines count from 1; 0 stands for the file as a whole. The return values
// are 0.
class NodeSink {
  public:
    // The finished tree, once, at the end of a well-formed document. The receiver owns it: deleting the root
    // deletes the whole tree.
    virtual int onNodeTree(Node* root) = 0;
    virtual int onWarning(const kest::String& message, int line);
    virtual int onError(const kest::String& message, int line);
    // The reader gives up.
    virtual int onCriticalError(const kest::String& message, int line);
    virtual ~NodeSink() = default;
};

}  // namespace tessa
