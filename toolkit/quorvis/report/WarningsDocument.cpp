#include "toolkit/quorvis/report/WarningsDocument.h"

#include "toolkit/machine/xml/XmlText.h"
#include "toolkit/quorvis/report/XmlAttribute.h"

namespace toolkit::quorvis {

namespace {

void appendEvent(std::string& xml, const EventList::Entry& entry) {
    const Event& event = entry.event;
    xml += "<Event";
    appendXmlAttribute(xml, "code", nameOf(event.code));
    appendXmlAttribute(xml, "severity", severityOf(event.code));
    if (!event.guid.empty()) appendXmlAttribute(xml, "guid", event.guid);
    if (!event.leaf.empty()) appendXmlAttribute(xml, "leaf", event.leaf);
    if (!event.path.empty()) appendXmlAttribute(xml, "path", event.path);
    appendXmlAttribute(xml, "count", std::to_string(entry.count));
    xml += '>';
    appendXmlText(xml, event.text);
    xml += "</Event>\n";
}

}  // namespace

std::string warningsDocument(const EventList& events) {
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    xml += "\n<Events>\n";
    for (const EventList::Entry& entry : events.entries()) appendEvent(xml, entry);
    xml += "</Events>\n";
    return xml;
}

}  // namespace toolkit::quorvis
