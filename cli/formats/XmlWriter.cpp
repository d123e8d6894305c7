#include "cli/formats/XmlWriter.h"

#include <fmt/format.h>

#include <string_view>

#include "cli/scan/XmlText.h"

namespace zavcli {

namespace {

constexpr std::string_view kScanInfo = "ScanInfo";

std::string element(const Field& field) {
    if (field.value.empty()) return fmt::format("    <{}/>\n", field.name);
    return fmt::format("    <{0}>{1}</{0}>\n", field.name, escapedXml(field.value));
}

std::string element(std::string_view group, const Instance& instance) {
    if (instance.empty()) return fmt::format("  <{}/>\n", group);
    std::string text = fmt::format("  <{}>\n", group);
    for (const Field& field : instance) text += element(field);
    return text + fmt::format("  </{}>\n", group);
}

std::string element(const Finding& finding) {
    std::string text = fmt::format("  <MatchedSignature guid=\"{}\"", escapedXml(finding.guid));
    if (!finding.name.empty()) text += fmt::format(" name=\"{}\"", escapedXml(finding.name));
    text += ">\n" + finding.metadata;
    if (!text.ends_with('\n')) text += '\n';
    for (const Field& variable : finding.variables) {
        text += fmt::format("    <Variable name=\"{}\" value=\"{}\"/>\n", escapedXml(variable.name),
                            escapedXml(variable.value));
    }
    return text + "  </MatchedSignature>\n";
}

}  // namespace

std::string xmlText(const Inventory& inventory) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Inventory>\n";
    bool tellsOfScan = false;
    for (const Group& group : inventory.groups) {
        for (const Instance& instance : group.instances) text += element(group.name, instance);
        tellsOfScan = tellsOfScan || group.name == kScanInfo;
    }
    if (!tellsOfScan && !inventory.scanInfo.empty()) text += element(kScanInfo, inventory.scanInfo);
    return text + "</Inventory>\n";
}

std::string xmlText(const SoftwareReport& report) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MatchedSignatures";
    text += report.complete ? " complete=\"true\">\n" : " complete=\"false\">\n";
    for (const Finding& finding : report.results) text += element(finding);
    return text + "</MatchedSignatures>\n";
}

}  // namespace zavcli
