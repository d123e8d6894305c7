#include "cli/scan/Metadata.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "cli/scan/Element.h"

namespace zavcli {

namespace {

std::string valueOf(const std::vector<Field>& fields, const std::string& name) {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const Field& field) { return field.name == name; });
    return found == fields.end() ? "" : found->value;
}

}  // namespace

std::string Metadata::text(const std::string& name) const {
    return valueOf(texts, name);
}

std::string Metadata::name() const {
    if (!matchedName.empty()) return matchedName;
    const std::string name = text("Name");
    return name.empty() ? text("Title") : name;
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
    const std::optional<Element> root = readElement(xml);
    if (!root) return metadata;
    for (const Element& child : root->children) {
        if (child.name == "Evidence")
            metadata.evidence.push_back(child.attributes);
        else if (child.name == "MatchedName")
            metadata.matchedName = child.text;  // the scanner's stands behind what the signature brought
        else if (child.children.empty() && !child.text.empty() && metadata.text(child.name).empty())
            metadata.texts.push_back({child.name, child.text});
    }
    return metadata;
}

}  // namespace zavcli
