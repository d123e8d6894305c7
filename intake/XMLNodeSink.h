#pragma once

#include "core/ZAVlog.h"
#include "tessa/Node.h"
#include "tessa/NodeSink.h"

namespace zav {

// Keeps the tree that a reader delivers, and tells the log what the reader complains of.
class XMLNodeSink : public tessa::NodeSink {
  public:
    // A null log drops the complaints. REQUIRES: log outlives this.
    explicit XMLNodeSink(ZAVlog* log) : log_(orSilent(log)) {}
    // Deletes the tree.
    ~XMLNodeSink() override { delete root_; }
    XMLNodeSink(const XMLNodeSink&) = delete;
    XMLNodeSink& operator=(const XMLNodeSink&) = delete;

    // The last tree is the one that is kept and owned.
    int onNodeTree(tessa::Node* root) override;
    int onWarning(const kest::String& message, int line) override;
    int onError(const kest::String& message, int line) override;
    int onCriticalError(const kest::String& message, int line) override;

    // Null when no tree was delivered; lives as long as the sink.
    tessa::Node* root() const { return root_; }

  private:
    tessa::Node* root_ = nullptr;
    ZAVlog& log_;
};

}  // namespace zav
