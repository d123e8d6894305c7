#include "toolkit/quorvis/report/OutputDocument.h"

#include "toolkit/machine/xml/XmlText.h"
#include "toolkit/quorvis/report/XmlAttribute.h"

namespace toolkit::quorvis {

namespace {

void appendEvidence(std::string& xml, const Evidence& evidence) {
    xml += "<Evidence";
    appendXmlAttribute(xml, "kind", evidence.kind);
    if (!evidence.source.empty()) appendXmlAttribute(xml, "source", evidence.source);
    if (!evidence.name.empty()) appendXmlAttribute(xml, "name", evidence.name);
    if (!evidence.version.empty()) appendXmlAttribute(xml, "version", evidence.version);
    xml += "/>";
}

}  // namespace

void appendMatch(std::string& xml, const Match& match) {
    xml += "<MatchedSignature";
    appendXmlAttribute(xml, "guid", match.guid);
    appendXmlAttribute(xml, "name", match.name);
    xml.append("><Metadata>").append(match.metadata);
    for (const Evidence& evidence : match.evidence) appendEvidence(xml, evidence);
    // Readers keep the metadata of a match, and not all of them its attributes.
    if (!match.name.empty()) {
        xml += "<MatchedName>";
        appendXmlText(xml, match.name);
        xml += "</MatchedName>";
    }
    xml += "</Metadata>";
    for (const auto& [name, value] : match.variables) {
        xml += "<Variable";
        appendXmlAttribute(xml, "name", name);
        appendXmlAttribute(xml, "value", value);
        xml += "/>";
    }
    xml += "</MatchedSignature>\n";
}

std::string outputDocument(std::string_view matches, bool complete) {
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    xml += "\n<MatchedSignatures language=\"1\"";
    appendXmlAttribute(xml, "complete", complete ? "true" : "false");
    xml += ">\n";
    xml.append(matches) += "</MatchedSignatures>\n";
    return xml;
}

}  // namespace toolkit::quorvis
