#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {

// The bytes of an XML document. A document that is not valid UTF-8 is interpreted as ISO-8859-1.
struct DocumentText {
    std::string bytes;
    bool utf8 = true;
    std::string error;  // why the file cannot be read; empty if it can
};

constexpr std::size_t kMaxDocumentSize = std::size_t{64} << 20;

// Reads a regular file or a pipe of at most kMaxDocumentSize bytes. UTF-16 and UTF-32 are errors.
DocumentText readDocument(const std::string& path);

// A position in characters, counted from 1.
struct TextPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

TextPlace placeIn(const DocumentText& document, std::size_t offset);
// Only the column of this position.
std::size_t columnIn(const DocumentText& document, std::size_t offset);

// Receives the content of an XML document. All texts are UTF-8 and valid until the function returns.
class XmlHandler {
  public:
    virtual ~XmlHandler() = default;
    // `attributes` are alternating names and values, terminated by null. `offset` is the start of the element.
    virtual void onStart(std::string_view name, const char* const* attributes, std::size_t offset) = 0;
    virtual void onEnd() = 0;
    // A text may be passed in several pieces.
    virtual void onText(std::string_view text, std::size_t offset) = 0;
};

struct XmlFault {
    std::size_t offset = 0;
    std::string text;
};

// Parses a document. Returns the first fault; none if it is well-formed. A document type declaration and elements nested
// deeper than `maxDepth` are faults. Exceptions of the handler are passed on.
std::optional<XmlFault> parseXml(const DocumentText& document, unsigned maxDepth, XmlHandler& handler);

// The attributes of an element in the form of Expat.
class XmlAttributes {
  public:
    explicit XmlAttributes(const char* const* pairs) : pairs_(pairs) {}

    // The value of the attribute with this local name; none if it is missing.
    std::optional<std::string_view> find(std::string_view localName) const;
    // Empty if it is missing.
    std::string_view get(std::string_view localName) const { return find(localName).value_or(""); }

  private:
    const char* const* pairs_;
};

// Receives the content of a document without positions. All texts are UTF-8, and names have no prefix.
class XmlEvents {
  public:
    XmlEvents() = default;
    XmlEvents(const XmlEvents&) = delete;
    XmlEvents& operator=(const XmlEvents&) = delete;
    virtual ~XmlEvents() = default;

    virtual void start(std::string_view name, const XmlAttributes& attributes) = 0;
    virtual void end() = 0;
    virtual void text(std::string_view text) = 0;
};

// Parses a document in memory, with at most 64 levels of elements. Returns a description of the first fault with its line
// and column; none if it is well-formed. The events cover everything before the fault.
std::optional<std::string> readXml(std::string_view document, XmlEvents& events,
                                   const ProgressCheck& checkProgress = {});

}  // namespace toolkit::quorvis
