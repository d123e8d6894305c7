#pragma once

#include "core/ZAVlog.h"
#include "tessa/Node.h"
#include "tessa/NodeSink.h"

namespace zav {

// Keeps the tree that a reader delivers and logs the reader's warnings and errors.
class XMLNodeSink : public tessa::NodeSink {
  public:
    // log may be null. REQUIRES: log outlives this object.
    explicit XMLNodeSink(ZAVlog* log) : log_(orSilent(log)) {}
    // Deletes the tree.
    ~XMLNodeSink() override { delete root_; }
    XMLNodeSink(const XMLNodeSink&) = delete;
    XMLNodeSink& operator=(const XMLNodeSink&) = delete;

    // Keeps the tree and takes ownership of it.
    int onNodeTree(tessa::Node* root) override;
    int onWarning(const kest::String& message, int line) override;
    int onError(const kest::String& message, int line) override;
    int onCriticalError(const kest::String& message, int line) override;

    // Null if no tree was delivered; valid for the lifetime of the sink.
    tessa::Node* root() const { return root_; }

  private:
    tessa::Node* root_ = nullptr;
    ZAVlog& log_;
};

}  // namespace zav
