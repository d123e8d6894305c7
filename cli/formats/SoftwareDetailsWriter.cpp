#include "cli/formats/SoftwareDetailsWriter.h"

#include <fmt/format.h>

#include "cli/formats/FieldLines.h"
#include "cli/scan/ResultMetadata.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

constexpr const char* kVersion = "version";

std::string heading(const MatchedSignature& match, const TableStyle& style) {
    std::string text = printable(match.name.empty() ? match.guid : match.name);
    if (style.bold) text = fmt::format("\x1b[1m{}\x1b[0m", text);
    for (const Field& variable : match.variables) {
        if (variable.name == kVersion && !variable.value.empty()) text += "  " + printable(variable.value);
    }
    return text + "\n";
}

void add(std::vector<Field>& fields, std::string_view name, const std::string& value) {
    if (!value.empty()) fields.push_back({printable(name), printable(value)});
}

std::string paragraph(const MatchedSignature& match, const TableStyle& style) {
    const Metadata metadata = readMetadata(match.metadata);
    std::vector<Field> fields;
    add(fields, "GUID", match.guid);
    add(fields, "Publisher", valueOf(metadata.texts, "Publisher"));
    for (const Field& variable : match.variables) {
        if (variable.name != kVersion) add(fields, variable.name, variable.value);
    }
    add(fields, "Evidence", metadata.evidenceText());
    return heading(match, style) + fieldLines(fields, "  ", style.columns).text + "\n";
}

}  // namespace

std::string detailsText(const SoftwareInventory& inventory, const TableStyle& style) {
    std::string text;
    for (const MatchedSignature& match : inventory.results) text += paragraph(match, style);
    return text;
}

}  // namespace zavcli
