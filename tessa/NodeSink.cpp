#include "tessa/NodeSink.h"

namespace tessa {

int NodeSink::onWarning(const kest::String& /*message*/, int /*line*/) {
    return 0;
}

int NodeSink::onError(const kest::String& /*message*/, int /*line*/) {
    return 0;
}

int NodeSink::onCriticalError(const kest::String& /*message*/, int /*line*/) {
    return 0;
}

}  // namespace tessa
