#include "cli/formats/XmlWriter.h"

#include <fmt/format.h>

#include <string_view>

#include "cli/scan/HardwareScan.h"
#include "cli/scan/Xml.h"

namespace zavcli {

namespace {

std::string element(const Field& field) {
    if (field.value.empty()) return fmt::format("    <{}/>\n", field.name);
    return fmt::format("    <{0}>{1}</{0}>\n", field.name, escapeXml(field.value));
}

std::string element(std::string_view group, const Instance& instance) {
    if (instance.empty()) return fmt::format("  <{}/>\n", group);
    std::string text = fmt::format("  <{}>\n", group);
    for (const Field& field : instance) text += element(field);
    return text + fmt::format("  </{}>\n", group);
}

std::string element(const MatchedSignature& match) {
    std::string text = fmt::format("  <MatchedSignature guid=\"{}\"", escapeXml(match.guid));
    if (!match.name.empty()) text += fmt::format(" name=\"{}\"", escapeXml(match.name));
    text += ">\n" + match.metadata;
    if (!text.ends_with('\n')) text += '\n';
    for (const Field& variable : match.variables) {
        text += fmt::format("    <Variable name=\"{}\" value=\"{}\"/>\n", escapeXml(variable.name),
                            escapeXml(variable.value));
    }
    return text + "  </MatchedSignature>\n";
}

}  // namespace

std::string xmlText(const HardwareInventory& inventory) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Inventory>\n";
    bool hasScanInfo = false;
    for (const Group& group : inventory.groups) {
        for (const Instance& instance : group.instances) text += element(group.name, instance);
        hasScanInfo = hasScanInfo || group.name == kScanInfo.name;
    }
    if (!hasScanInfo && !inventory.scanInfo.empty()) text += element(kScanInfo.name, inventory.scanInfo);
    return text + "</Inventory>\n";
}

std::string xmlText(const SoftwareInventory& inventory) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MatchedSignatures";
    text += inventory.complete ? " complete=\"true\">\n" : " complete=\"false\">\n";
    for (const MatchedSignature& match : inventory.results) text += element(match);
    return text + "</MatchedSignatures>\n";
}

}  // namespace zavcli
