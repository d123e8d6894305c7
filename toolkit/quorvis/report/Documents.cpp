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
    if (!event.because.empty()) appendXmlAttribute(xml, "because", event.because);
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

constexpr std::size_t kBlockSize = std::size_t{256} << 10;

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

void MatchElements::add(std::string_view element) {
    if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < element.size())
        blocks_.emplace_back().reserve(std::max(kBlockSize, element.size()));
    blocks_.back() += element;
}

void writeOutputDocument(const MatchElements& matches, bool complete, const TextSink& sink) {
    std::string start = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    start += "\n<MatchedSignatures language=\"1\"";
    appendXmlAttribute(start, "complete", complete ? "true" : "false");
    sink(start += ">\n");
    for (const std::string& block : matches.blocks()) sink(block);
    sink("</MatchedSignatures>\n");
}

std::string warningsDocument(const EventList& events) {
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    xml += "\n<Events>\n";
    for (const EventList::Entry& entry : events.entries()) appendEvent(xml, entry);
    xml += "</Events>\n";
    return xml;
}

bool OutputLimit::admit(std::string_view element) {
    std::uint64_t cost = kSizeOfByte * element.size();
    for (const char c : element) cost += c == '<' ? kSizeOfTag : c == '=' ? kSizeOfAttribute : 0;
    if (cost > kMaxTreeSize - size_) return false;
    size_ += cost;
    return true;
}

}  // namespace toolkit::quorvis
