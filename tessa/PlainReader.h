#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "tessa/DocumentFile.h"

namespace tessa {

// An attribute as it stands in the document, in UTF-8.
struct AttributeText {
    std::string_view name;
    std::string_view value;
};

// Receives the elements and texts of a document in document order, in UTF-8. A text may come in pieces. Each event returns
// false to end the reading.
class PlainSink {
  public:
    virtual bool startElement(std::string_view name, const std::vector<AttributeText>& attributes) = 0;
    virtual bool endElement() = 0;
    virtual bool text(std::string_view piece) = 0;

    // The name of the innermost open element, and one that the next element probably has; the latter may be empty.
    virtual std::string_view openName() const = 0;
    virtual std::string_view expectedName() const = 0;

  protected:
    ~PlainSink() = default;
};

// Reads a plain document, as scanners write them, several times faster than Expat does. Plain are documents in UTF-8 of
// elements, attributes and text with the predefined entities and character references, and with names in ASCII.
//
// False if the document is anything else, or wrong, or if the sink ended the reading. What the sink has received is then
// void, and the document must be read from the beginning with Expat, which alone decides what is wrong and how it is told.
// If it returns true, Expat accepts the document without a warning and reports the same events. `blockSize` is the number
// of bytes per read, 0 for the default. Throws Fault if the file cannot be read, std::bad_alloc, and what the sink throws.
bool readPlainDocument(DocumentFile& file, int blockSize, PlainSink& sink);

}  // namespace tessa
