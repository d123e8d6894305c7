#include "toolkit/quorvis/language/Diagnostics.h"

namespace toolkit::quorvis {

std::string quoted(std::string_view text) {
    constexpr std::size_t kMaxSize = 80;
    std::string result = "\"";
    result += text.substr(0, kMaxSize);
    // Do not cut a UTF-8 character in two.
    if (text.size() > kMaxSize) {
        while ((static_cast<unsigned char>(text[result.size() - 1]) & 0xC0U) == 0x80) result.pop_back();
        result += "...";
    }
    return result += '"';
}

void reportUnknownAttribute(const Element& element, std::string_view name, Diagnostics& diagnostics) {
    diagnostics.problem(element, "unknown attribute " + quoted(name) + " of " + std::string(element.name));
}

void reportMissingAttribute(const Element& element, std::string_view name, Diagnostics& diagnostics) {
    diagnostics.problem(element, std::string(element.name) + " lacks the attribute " + quoted(name));
}

void reportMisplaced(const Element& parent, const Element& child, Diagnostics& diagnostics) {
    std::string text =
        child.isText() ? "text " + quoted(child.text) : "unknown or misplaced element " + quoted(child.name);
    diagnostics.problem(child, text.append(" in ").append(parent.name));
}

void requireNoChildren(const Element& element, Diagnostics& diagnostics) {
    for (const Element* child = element.firstChild; child != nullptr; child = child->next)
        reportMisplaced(element, *child, diagnostics);
}

}  // namespace toolkit::quorvis
