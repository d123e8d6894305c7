#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "toolkit/quorvis/formats/ParseLimits.h"

namespace toolkit::quorvis {

// The attributes of an element, as Expat hands them out.
class XmlAttributes {
  public:
    explicit XmlAttributes(const char* const* pairs) : pairs_(pairs) {}

    // The value of the attribute with this local name.
    std::optional<std::string_view> find(std::string_view localName) const;
    // Empty when there is none.
    std::string_view get(std::string_view localName) const { return find(localName).value_or(""); }

  private:
    const char* const* pairs_;
};

// Is told what stands in a document. All texts are UTF-8 and names are without their namespace.
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

// Goes through a document. None when all is well, else what is wrong and where: the events tell of what
// stands before. A document type declaration is wrong, and so is an element more than 64 levels deep.
std::optional<std::string> readXml(std::string_view document, XmlEvents& events, const Tick& tick = {});

}  // namespace toolkit::quorvis
