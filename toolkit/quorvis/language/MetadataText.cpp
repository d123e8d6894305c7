#include "toolkit/quorvis/language/MetadataText.h"

#include <algorithm>

#include "toolkit/machine/xml/XmlText.h"

namespace toolkit::quorvis {

namespace {

bool isAscii(std::string_view name) {
    return std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// False when it cannot be written. Elements are nested to a depth that the reader bounds.
bool append(std::string& xml, const Element& element) {
    if (element.isText()) {
        appendXmlText(xml, element.text);
        return true;
    }
    if (!isAscii(element.name)) return false;
    xml.append("<").append(element.name);
    for (const ElementAttribute& attribute : element.attributes) {
        if (!isAscii(attribute.name)) return false;
        appendXmlAttribute(xml, attribute.name, attribute.value);
    }
    if (element.firstChild == nullptr) {
        xml += "/>";
        return true;
    }
    xml += '>';
    for (const Element* child = element.firstChild; child != nullptr; child = child->next) {
        if (!append(xml, *child)) return false;
    }
    xml.append("</").append(element.name).append(">");
    return true;
}

}  // namespace

std::optional<std::string> innerXml(const Element& element) {
    constexpr std::size_t kUsual = 250;
    std::string xml;
    xml.reserve(kUsual);
    for (const Element* child = element.firstChild; child != nullptr; child = child->next) {
        if (!append(xml, *child)) return std::nullopt;
    }
    return xml;
}

}  // namespace toolkit::quorvis
