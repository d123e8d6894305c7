#include "tessa/NodeReader.h"

#include <memory>

#include "kest/Text.h"
#include "tessa/DocumentFile.h"
#include "tessa/DocumentReader.h"
#include "tessa/ReadError.h"

namespace tessa {

int NodeReader::process(const kest::String& path, int /*reserved*/) {
    status = 1;
    try {
        DocumentFile file(kest::narrow(path.view()).c_str());
        std::unique_ptr<Node> root = readDocument(*this, sink_, file);
        status = 0;
        sink_.onNodeTree(root.release());
    } catch (const Fault& fault) {
        sink_.onCriticalError(kest::String(kest::widen(fault.message)), fault.line);
    }
    return status;
}

int NodeReader::lineOf(const kest::String& path, const NodePath& place) const {
    try {
        DocumentFile file(kest::narrow(path.view()).c_str());
        return findLine(*this, file, place);
    } catch (const Fault&) {
        return 0;
    }
}

}  // namespace tessa
