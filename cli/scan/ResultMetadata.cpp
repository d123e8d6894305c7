#include "cli/scan/ResultMetadata.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/scan/Xml.h"

namespace zavcli {

std::string Metadata::name() const {
    if (!matchedName.empty()) return matchedName;
    const std::string name = valueOf(texts, "Name");
    return name.empty() ? valueOf(texts, "Title") : name;
}

std::string Metadata::evidenceText() const {
    if (evidence.empty()) return "";
    std::vector<std::string> words;
    for (const char* attribute : {"kind", "name", "version"}) {
        std::string word = valueOf(evidence.front(), attribute);
        if (!word.empty()) words.push_back(std::move(word));
    }
    const std::string source = valueOf(evidence.front(), "source");
    if (!source.empty() && source != valueOf(evidence.front(), "name"))
        words.push_back(fmt::format("({})", source));
    return fmt::format("{}", fmt::join(words, " "));
}

Metadata readMetadata(const std::string& xml) {
    Metadata metadata;
    const std::optional<XmlElement> root = readXmlElement(xml);
    if (!root) return metadata;
    for (const XmlElement& child : root->children) {
        if (child.name == "Evidence")
            metadata.evidence.push_back(child.attributes);
        else if (child.name == "MatchedName")
            metadata.matchedName = child.text;  // the last one is that of the scanner
        else if (child.children.empty() && !child.text.empty() && valueOf(metadata.texts, child.name).empty())
            metadata.texts.push_back({child.name, child.text});
    }
    return metadata;
}

}  // namespace zavcli
