#pragma once

#include "core/ZAVlog.h"
#include "intake/XMLNodeSink.h"
#include "tessa/ReadError.h"

namespace zav {

// An XML file that a scanner wrote. The constructor reads it.
//     XMLParser parser(log, path);
//     if (parser.status == 0) ... parser.getRootNode() ...
class XMLParser {
  public:
    // Warnings and errors go to log, with the file's name in front; log may be null. REQUIRES: log outlives this object.
    // Throws std::bad_alloc.
    XMLParser(ZAVlog* log, const wchar_t* path);

    // The document's root element; null if there is none. Valid for the lifetime of the parser.
    tessa::Node* getRootNode() const { return sink_.root(); }

    // The line of a node of the tree, for use in messages; 0 if the file no longer contains the node. Reads the file
    // again. Throws std::bad_alloc.
    int lineOf(const tessa::NodePath& place) const;

    // Logs why a file could not be read, as the constructor does.
    static void reportFault(ZAVlog* log, const kest::String& path, const tessa::Fault& fault);

    // 0 if the file was read without error, otherwise 1 or more.
    int status;

  private:
    kest::String path_;
    XMLNodeSink sink_;
};

}  // namespace zav
