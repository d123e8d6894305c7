#include "toolkit/quorvis/language/ElementRules.h"

namespace toolkit::quorvis {

std::string quoted(std::string_view text) {
    constexpr std::size_t kLongest = 80;
    std::string result = "\"";
    result += text.substr(0, kLongest);
    // A character is not cut in two.
    if (text.size() > kLongest) {
        while ((static_cast<unsigned char>(text[result.size() - 1]) & 0xC0U) == 0x80) result.pop_back();
        result += "...";
    }
    return result += '"';
}

void complainOfUnknownAttribute(const Element& element, std::string_view name, Complaints& complaints) {
    complaints.problem(element, "unknown attribute " + quoted(name) + " of " + std::string(element.name));
}

void complainOfMissingAttribute(const Element& element, std::string_view name, Complaints& complaints) {
    complaints.problem(element, std::string(element.name) + " lacks the attribute " + quoted(name));
}

void complainOfChild(const Element& parent, const Element& child, Complaints& complaints) {
    std::string text =
        child.isText() ? "text " + quoted(child.text) : "unknown or misplaced element " + quoted(child.name);
    complaints.problem(child, text.append(" in ").append(parent.name));
}

void refuseChildren(const Element& element, Complaints& complaints) {
    for (const Element* child = element.firstChild; child != nullptr; child = child->next)
        complainOfChild(element, *child, complaints);
}

}  // namespace toolkit::quorvis
