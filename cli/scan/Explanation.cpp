#include "cli/scan/Explanation.h"

#include <fmt/format.h>

#include <fstream>

#include "cli/scan/Workspace.h"
#include "cli/scan/XmlText.h"
#include "cli/system/Failure.h"
#include "cli/system/Program.h"

namespace zavcli {

namespace {

std::string configuration(const std::vector<Preset>& presets, const std::vector<Setting>& settings) {
    std::string xml = "<Configuration>\n";
    for (const Preset& preset : presets) {
        xml += fmt::format("<Variable name=\"{}\" value=\"{}\" guid=\"{}\"/>\n", escapedXml(preset.name),
                           escapedXml(preset.value), escapedXml(preset.guid));
    }
    for (const Setting& setting : settings) {
        xml +=
            fmt::format("<Plugin name=\"{}\"><Attribute name=\"{}\" value=\"{}\"/></Plugin>\n",
                        escapedXml(setting.plugin), escapedXml(setting.attribute), escapedXml(setting.value));
    }
    return xml + "</Configuration>\n";
}

}  // namespace

std::string explainSignature(const std::string& scanner, const std::string& signatures,
                             const std::string& guid, const std::vector<Preset>& presets,
                             const std::vector<Setting>& settings) {
    const Workspace workspace;
    const std::string settingsFile = workspace.path() + "/config.xml";
    std::ofstream(settingsFile, std::ios::binary) << configuration(presets, settings);
    const ProgramEnd end =
        runProgram(scanner, {"-c", settingsFile, "-o", workspace.path() + "/output.xml", "-e",
                             workspace.path() + "/warnings.xml", "-i", signatures, "--explain", guid});
    if (end.status == 0) return end.out;
    throw Failure(kExitFailed, fmt::format("the scanner {} cannot explain the signature: it ended with "
                                           "status {}{}{}",
                                           scanner, end.status, end.out.empty() ? "" : " and said: ",
                                           end.out.substr(0, end.out.find('\n'))));
}

}  // namespace zavcli
