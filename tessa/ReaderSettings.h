#pragma once

namespace tessa {

// The settings of a NodeReader.
struct ReaderSettings {
    int blockSize = 0;              // bytes per read; 0 for the default
    bool keepWhitespace = false;    // keep all texts of only white space
    bool refuseDoctype = false;     // make a document type declaration a critical error
    bool expandNamespaces = false;  // replace names by "namespace|name"
};

}  // namespace tessa
