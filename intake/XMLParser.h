#pragma once

#include "core/ZAVlog.h"
#include "intake/XMLNodeSink.h"

namespace zav {

// One XML file that a scanner wrote, read at construction.
//     XMLParser parser(log, path);
//     if (parser.status == 0) ... parser.getRootNode() ...
class XMLParser {
  public:
    // log may be null; complaints of the reader go there, with the file's name before them. REQUIRES: log outlives this. Throws std::bad_alloc.
    XMLParser(ZAVlog* log, const wchar_t* path);

    // The document's root element, null when there is none; lives as long as the parser.
    tessa::Node* getRootNode() const { return sink_.root(); }

    // The line of a node of the tree, for what is said of it; 0 when the file does not hold it any more. Reads the
    // file anew. Throws std::bad_alloc.
    int lineOf(const tessa::Place& place) const;

    // 0 when the file was read without error, 1 or more when it was not.
    int status;

  private:
    kest::String path_;
    XMLNodeSink sink_;
};

}  // namespace zav
