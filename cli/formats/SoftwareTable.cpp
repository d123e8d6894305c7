#include "cli/formats/SoftwareTable.h"

#include <fmt/format.h>

#include "cli/formats/FieldLines.h"
#include "cli/scan/Metadata.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr const char* kVersion = "version";

std::string heading(const Finding& finding, const TableStyle& style) {
    std::string text = printable(finding.name.empty() ? finding.guid : finding.name);
    if (style.bold) text = fmt::format("\x1b[1m{}\x1b[0m", text);
    for (const Field& variable : finding.variables) {
        if (variable.name == kVersion && !variable.value.empty()) text += "  " + printable(variable.value);
    }
    return text + "\n";
}

void add(std::vector<Field>& fields, std::string_view name, const std::string& value) {
    if (!value.empty()) fields.push_back({printable(name), printable(value)});
}

std::string paragraph(const Finding& finding, const TableStyle& style) {
    const Metadata metadata = readMetadata(finding.metadata);
    std::vector<Field> fields;
    add(fields, "GUID", finding.guid);
    add(fields, "Publisher", metadata.text("Publisher"));
    for (const Field& variable : finding.variables) {
        if (variable.name != kVersion) add(fields, variable.name, variable.value);
    }
    add(fields, "Evidence", metadata.evidenceText());
    return heading(finding, style) + fieldLines(fields, "  ", style.columns).text + "\n";
}

std::string counted(std::size_t count, std::string_view one, std::string_view several) {
    if (count == 0) return fmt::format("no {}", several);
    return fmt::format("{} {}", count, count == 1 ? one : several);
}

std::string summary(const SoftwareReport& report) {
    std::string text = counted(report.results.size(), "match", "matches");
    if (report.results.size() != report.matches) text += fmt::format(" of {} shown", report.matches);
    text += fmt::format("; {} in {}", counted(report.signatures, "signature", "signatures"),
                        counted(report.files, "file", "files"));
    if (!report.undecided.empty())
        text += fmt::format("; {} undecided", report.undecided.size());
    else if (!report.complete)
        text += "; something was left out";
    if (!report.warnings.empty())
        text += fmt::format("; {}", counted(report.warnings.size(), "warning", "warnings"));
    return text + "\n";
}

}  // namespace

std::string tableText(const SoftwareReport& report, const TableStyle& style) {
    std::string text;
    for (const Finding& finding : report.results) text += paragraph(finding, style);
    return text + summary(report);
}

}  // namespace zavcli
