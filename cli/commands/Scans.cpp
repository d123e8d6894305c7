#include "cli/commands/Scans.h"

#include <fmt/format.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "cli/commands/ScanSetup.h"
#include "cli/scan/Catalogue.h"
#include "cli/scan/HardwareScan.h"
#include "cli/scan/LogPrinter.h"
#include "cli/scan/ScanFacts.h"
#include "cli/scan/SignatureEvaluation.h"
#include "cli/scan/Warnings.h"
#include "cli/scan/Workspace.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

std::vector<Preset> presetsOf(const Options& options, const std::vector<SignatureFile>& files) {
    Identifiers identifiers;
    for (const SignatureFile& file : files) {
        for (const auto& [guid, name] : file.names) identifiers.insert(guid);
    }
    return parsePresets(options.variables, identifiers);
}

// The settings of the command line come last, because the last one counts.
std::vector<Setting> settingsOf(const Options& options) {
    std::vector<Setting> settings;
    if (options.signatures.empty()) settings = catalogueSettings();
    for (const std::string& text : options.settings) settings.push_back(parseSetting(text));
    return settings;
}

bool isUsed(const Preset& preset, const std::vector<SignatureFile>& files) {
    const std::string guid = lowerCase(preset.guid);
    return std::any_of(files.begin(), files.end(), [&](const SignatureFile& file) {
        return std::any_of(file.variables.begin(), file.variables.end(), [&](const auto& uses) {
            return (guid.empty() || guid == uses.first) && uses.second.contains(preset.name);
        });
    });
}

// Reports each preset that no signature uses.
void reportUnused(const std::vector<Preset>& presets, const std::vector<SignatureFile>& files) {
    for (const Preset& preset : presets) {
        if (isUsed(preset, files)) continue;
        printMessage(preset.guid.empty()
                         ? fmt::format("warning: no signature uses the variable '{}'", preset.name)
                         : fmt::format("warning: the signature {} does not use the variable '{}'",
                                       preset.guid, preset.name));
    }
}

// Adds the undecided signatures, and whether the results are complete.
void addCompleteness(SoftwareInventory& inventory, const std::vector<std::string>& guids,
                     const std::vector<SignatureFile>& files) {
    std::map<std::string, std::string> names = namesIn(files);
    for (const auto& [guid, because] : undecidedSignatures(inventory.warnings)) {
        const std::string key = lowerCase(guid);
        const bool wanted = guids.empty() || std::any_of(guids.begin(), guids.end(), [&](const auto& other) {
                                return lowerCase(other) == key;
                            });
        if (wanted) inventory.undecided.push_back({guid, names[key], because});
    }
    inventory.complete = inventory.fault.empty() && !hasGaps(inventory.warnings, guids);
}

// The software scanner does not report the name of the machine.
std::string thisHost() {
    utsname names{};
    return uname(&names) == 0 ? static_cast<const char*>(names.nodename) : "";
}

HardwareInventory scanWith(const Options& options, const Toolkit& toolkit, const Workspace& workspace,
                           const std::vector<std::string>& groupNames) {
    const std::string root = passScannedRoot(options, kHardwareScanner);
    ProgressBar progress(isCapableTerminal(STDERR_FILENO));
    LogPrinter printer(options.verbosity, toolkit.source, progress);
    LibraryHandle library(&printer, workspace, toolkit.directory);
    const std::vector<GroupName> groups = chooseGroups(library.groups(), groupNames);
    progress.begin(static_cast<int>(groups.size()));
    const bool ofManyMachines = options.command == Command::Facts || options.format == Format::JsonLines;
    HardwareInventory inventory = scanHardware(library, toolkit.directory, root, groups,
                                               ofManyMachines ? HostName::Always : HostName::IfScanned);
    progress.end();
    return inventory;
}

}  // namespace

std::vector<std::string> signaturePaths(const Options& options) {
    return signatureFilePaths(options.signatures.empty() ? std::vector{catalogueDirectory()}
                                                         : options.signatures);
}

std::vector<SignatureFile> readSignatureFiles(const Options& options) {
    std::vector<SignatureFile> files;
    for (const std::string& path : signaturePaths(options)) files.push_back(readSignatureFile(path));
    return files;
}

EvaluationOptions evaluationOptions(const Options& options, const std::vector<SignatureFile>& files) {
    EvaluationOptions evaluation{presetsOf(options, files), settingsOf(options)};
    reportUnused(evaluation.presets, files);
    return evaluation;
}

HardwareInventory scanMachine(const Options& options, const std::vector<std::string>& groupNames) {
    const Toolkit toolkit = selectToolkit(options, kHardwareScanner);
    passScanOptions(options);
    const Workspace workspace;
    return scanWith(options, toolkit, workspace, groupNames);
}

HardwareInventory recordMachine(const Options& options, const Workspace& workspace,
                                const std::string& record) {
    const Toolkit toolkit = selectToolkit(options, kHardwareScanner);
    setenv("QUORVAH_RECORD", record.c_str(), 1);
    unsetenv("QUORVAH_SANITIZE");  // what is to be hidden in the files must be known
    constexpr int kKeep = 0;
    setenv(kHardwareScanner.rootVariable, "/", kKeep);
    return scanWith(options, toolkit, workspace, {});
}

SoftwareInventory evaluateSignatures(const Options& options, const std::vector<SignatureFile>& files) {
    auto [presets, settings] = evaluationOptions(options, files);
    const Toolkit toolkit = selectToolkit(options, kSoftwareScanner);
    const std::string root = passScannedRoot(options, kSoftwareScanner);

    ProgressBar progress(isCapableTerminal(STDERR_FILENO));
    // Other scanners may not know the setting.
    if (progress.isEnabled() && toolkit.source == ToolkitSource::Bundled)
        settings.push_back({"Evaluation", "progress", "true"});
    LogPrinter printer(options.verbosity, toolkit.source, progress);
    ScannerOutput output(printer);
    const Workspace workspace;
    LibraryHandle library(&output, workspace, toolkit.directory);
    applyOptions(library, presets, settings);
    const ScanTimer timer(toolkit.directory, root);
    progress.beginPercent();
    const auto report = [&progress](const std::string& line) {
        progress.hide();
        printMessage(line);
    };
    SoftwareInventory inventory = evaluateFiles(
        library, output, scannerPath(toolkit.directory, kSoftwareScanner), files, options.guids, report);
    progress.end();
    inventory.scan = timer.facts();
    if (root.empty()) inventory.scan.host = thisHost();
    addCompleteness(inventory, options.guids, files);
    return inventory;
}

void printWarnings(const SoftwareInventory& inventory, const Options& options) {
    const bool concise =
        options.signatures.empty() && options.verbosity == Verbosity::Errors && !options.details;
    const char* const option = options.command == Command::Software ? "--details" : "-v";
    const std::vector<std::string> lines =
        concise ? conciseWarningLines(inventory.warnings, option, geteuid() == 0)
                : warningLines(inventory.warnings, Naming::AllUndecided);
    for (const std::string& line : lines) printMessage(line);
}

}  // namespace zavcli
