#include "toolkit/quorvis/report/Documents.h"

#include <algorithm>

#include "toolkit/machine/xml/XmlText.h"

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

void appendEvent(std::string& xml, const EventList::Entry& entry) {
    const Event& event = entry.event;
    xml += "<Event";
    appendXmlAttribute(xml, "code", nameOf(event.code));
    appendXmlAttribute(xml, "severity", severityOf(event.code));
    if (!event.guid.empty()) appendXmlAttribute(xml, "guid", event.guid);
    if (!event.leaf.empty()) appendXmlAttribute(xml, "leaf", event.leaf);
    if (!event.path.empty()) appendXmlAttribute(xml, "path", event.path);
    if (event.ofFile) appendXmlAttribute(xml, "scope", "file");
    appendXmlAttribute(xml, "count", std::to_string(entry.count));
    xml += '>';
    appendXmlText(xml, event.text);
    xml += "</Event>\n";
}

// Estimated memory of a reader that keeps a tree of wide texts. Readers may refuse a tree of 1 GiB.
constexpr std::uint64_t kMaxTreeSize = std::uint64_t{768} << 20;
constexpr std::uint64_t kSizeOfByte = 4;
constexpr std::uint64_t kSizeOfTag = 160;
constexpr std::uint64_t kSizeOfAttribute = 64;

}  // namespace

void appendMatch(std::string& xml, const Match& match) {
    xml += "<MatchedSignature";
    appendXmlAttribute(xml, "guid", match.guid);
    appendXmlAttribute(xml, "name", match.name);
    xml.append("><Metadata>").append(match.metadata);
    for (const auto& [name, text] : match.identities) {
        xml.append("<").append(name).append(">");
        appendXmlText(xml, text);
        xml.append("</").append(name).append(">");
    }
    for (const Evidence& evidence : match.evidence) appendEvidence(xml, evidence);
    // Some readers keep the metadata of a match, but not its attributes.
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

std::string warningsDocument(const EventList& events) {
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    xml += "\n<Events>\n";
    for (const EventList::Entry& entry : events.entries()) appendEvent(xml, entry);
    xml += "</Events>\n";
    return xml;
}

bool OutputLimit::admit(std::string_view element) {
    const auto count = [element](char c) {
        return static_cast<std::uint64_t>(std::ranges::count(element, c));
    };
    const std::uint64_t cost =
        kSizeOfByte * element.size() + kSizeOfTag * count('<') + kSizeOfAttribute * count('=');
    if (cost > kMaxTreeSize - size_) return false;
    size_ += cost;
    return true;
}

}  // namespace toolkit::quorvis
