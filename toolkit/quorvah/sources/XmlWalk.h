#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

// The attributes of an element.
class XmlAttributes {
  public:
    // Pairs of names and values, ended by a null pointer.
    explicit XmlAttributes(const char* const* pairs) : pairs_(pairs) {}

    // Empty if there is no such attribute.
    std::string_view value(std::string_view name) const;

  private:
    const char* const* pairs_;
};

struct XmlHandler {
    // `path` has the names of the element and those around it: "domain/devices/disk".
    std::function<void(const std::string& path, const XmlAttributes& attributes)> begin;
    std::function<void(const std::string& path, const std::string& text)> end;
};

// Reads a document of another program. Stops at a document type declaration, below 64 levels and at text of more than 64 KiB
// in an element. Returns whether the whole document was read.
bool walkXml(std::string_view document, const XmlHandler& handler);

}  // namespace toolkit::quorvah
