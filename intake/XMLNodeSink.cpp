#include "intake/XMLNodeSink.h"

namespace zav {

namespace {

constexpr const char* kFunction = "XML_parser";

}  // namespace

int XMLNodeSink::onNodeTree(tessa::Node* root) {
    root_ = root;
    return 0;
}

int XMLNodeSink::onWarning(const kest::String& message, int line) {
    log_.traceMAX(kFunction, "Warning in line %d: %S", line, message.text());
    return 0;
}

int XMLNodeSink::onError(const kest::String& message, int line) {
    log_.traceMIN(kFunction, "Error in line %d: %S", line, message.text());
    return 0;
}

int XMLNodeSink::onCriticalError(const kest::String& message, int line) {
    return onError(message, line);
}

}  // namespace zav
