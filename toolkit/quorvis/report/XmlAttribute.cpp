#include "toolkit/quorvis/report/XmlAttribute.h"

#include "toolkit/machine/xml/XmlText.h"

namespace toolkit::quorvis {

void appendXmlAttribute(std::string& xml, std::string_view name, std::string_view value) {
    xml.append(" ").append(name).append("=\"");
    const std::size_t start = xml.size();
    appendXmlText(xml, value);
    for (std::size_t at = xml.find_first_of("\t\n", start); at != std::string::npos;
         at = xml.find_first_of("\t\n", at)) {
        xml.replace(at, 1, xml[at] == '\t' ? "&#9;" : "&#10;");
    }
    xml += '"';
}

}  // namespace toolkit::quorvis
