#include "cli/scan/SignatureDiagnostics.h"

#include <fmt/format.h>

#include <fstream>
#include <sstream>

#include "cli/scan/Workspace.h"
#include "cli/scan/Xml.h"
#include "cli/system/ChildProgram.h"
#include "cli/system/Failure.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

constexpr int kValid = 0;
constexpr int kInvalid = 3;

// The lines of the scanner, made printable. The file is named in each line.
std::string reportLines(const std::string& output, const std::string& path) {
    std::string text;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const bool named = line.find(path) != std::string::npos;
        text += printable(named ? line : fmt::format("{}: {}", path, line)) + "\n";
    }
    return text;
}

// The configuration file of the scanner.
std::string configuration(const std::vector<Preset>& presets, const std::vector<Setting>& settings) {
    std::string xml = "<Configuration>\n";
    for (const Preset& preset : presets) {
        xml += fmt::format("<Variable name=\"{}\" value=\"{}\" guid=\"{}\"/>\n", escapeXml(preset.name),
                           escapeXml(preset.value), escapeXml(preset.guid));
    }
    for (const Setting& setting : settings) {
        xml += fmt::format("<Plugin name=\"{}\"><Attribute name=\"{}\" value=\"{}\"/></Plugin>\n",
                           escapeXml(setting.plugin), escapeXml(setting.attribute), escapeXml(setting.value));
    }
    return xml + "</Configuration>\n";
}

}  // namespace

CheckResult checkSignatures(const std::string& scanner, const std::vector<std::string>& paths) {
    CheckResult check;
    for (const std::string& path : paths) {
        const ProgramResult result = runProgram(scanner, {"--check", "-i", path});
        if (result.status != kValid && result.status != kInvalid)
            throw Failure(kExitFailed,
                          fmt::format("the scanner {} cannot check signatures: it ended with status {}",
                                      scanner, result.status));
        check.valid = check.valid && result.status == kValid;
        std::string lines = reportLines(result.output, path);
        if (lines.empty())
            lines = fmt::format("{}: {}\n", printable(path), result.status == kValid ? "valid" : "not valid");
        check.text += lines;
    }
    return check;
}

std::string explainSignature(const std::string& scanner, const std::string& signatures,
                             const std::string& guid, const std::vector<Preset>& presets,
                             const std::vector<Setting>& settings) {
    const Workspace workspace;
    const std::string settingsFile = workspace.path() + "/config.xml";
    std::ofstream(settingsFile, std::ios::binary) << configuration(presets, settings);
    const ProgramResult result =
        runProgram(scanner, {"-c", settingsFile, "-o", workspace.path() + "/output.xml", "-e",
                             workspace.path() + "/warnings.xml", "-i", signatures, "--explain", guid});
    if (result.status == 0) return result.output;
    throw Failure(kExitFailed,
                  fmt::format("the scanner {} cannot explain the signature: it ended with "
                              "status {}{}{}",
                              scanner, result.status, result.output.empty() ? "" : " and printed: ",
                              result.output.substr(0, result.output.find('\n'))));
}

}  // namespace zavcli
