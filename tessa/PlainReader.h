#pragma once

#include <memory>

#include "tessa/DocumentFile.h"
#include "tessa/Node.h"
#include "tessa/ReaderSettings.h"

namespace tessa {

// Reads a plain document, as scanners write them, several times faster than Expat does. Plain are documents in UTF-8 of
// elements, attributes and text with the predefined entities and character references, and with names in ASCII.
//
// Null if the document is anything else, or wrong, or too large: it must then be read from the beginning with Expat, which
// alone decides what is wrong and how it is told. A tree is the same as Expat's. Throws Fault if the file cannot be read,
// and std::bad_alloc.
std::unique_ptr<Node> readPlainDocument(const ReaderSettings& settings, DocumentFile& file);

}  // namespace tessa
