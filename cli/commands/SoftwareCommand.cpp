#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <numeric>

#include "cli/commands/Commands.h"
#include "cli/commands/ScanSetup.h"
#include "cli/formats/SignatureListWriter.h"
#include "cli/scan/Catalogue.h"
#include "cli/scan/EvaluationOptions.h"
#include "cli/scan/LogPrinter.h"
#include "cli/scan/ProductIdentity.h"
#include "cli/scan/ScanFacts.h"
#include "cli/scan/SignatureDiagnostics.h"
#include "cli/scan/SignatureEvaluation.h"
#include "cli/scan/SignatureFile.h"
#include "cli/scan/Warnings.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

std::vector<std::string> filePaths(const Options& options) {
    return signatureFilePaths(options.signatures.empty() ? std::vector{catalogueDirectory()}
                                                         : options.signatures);
}

std::vector<SignatureFile> readFiles(const Options& options) {
    std::vector<SignatureFile> files;
    for (const std::string& path : filePaths(options)) files.push_back(readSignatureFile(path));
    return files;
}

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

bool isIn(const std::vector<SignatureFile>& files, const std::string& guid) {
    const std::string wanted = lowerCase(guid);
    return std::any_of(files.begin(), files.end(),
                       [&](const SignatureFile& file) { return file.names.contains(wanted); });
}

// A file that is not well-formed may hold any signature. The scanner reports what is wrong with it.
void requireSignature(const std::vector<SignatureFile>& files, const std::string& guid) {
    const bool allRead =
        std::all_of(files.begin(), files.end(), [](const SignatureFile& file) { return file.wellFormed; });
    if (allRead && !isIn(files, guid))
        throw Failure(kExitBadUsage, fmt::format("no signature has the identifier {}", guid));
}

// Reports each requested signature that does not match.
void reportUnmatched(const SoftwareInventory& inventory, const std::vector<std::string>& guids) {
    const auto isAmong = [](const auto& items, const std::string& guid) {
        return std::any_of(items.begin(), items.end(),
                           [&](const auto& item) { return lowerCase(item.guid) == lowerCase(guid); });
    };
    for (const std::string& guid : guids) {
        if (!isAmong(inventory.results, guid) && !isAmong(inventory.undecided, guid))
            printMessage(fmt::format("the signature {} does not match", guid));
    }
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

bool isManaged(const MatchedSignature& match) {
    return identityOf(match).packaging == Packaging::Owned;
}

// Adds the undecided signatures, and whether the results are complete.
void addCompleteness(SoftwareInventory& inventory, const std::vector<std::string>& guids,
                     const std::vector<SignatureFile>& files) {
    std::map<std::string, std::string> names = namesIn(files);
    for (const std::string& guid : undecidedSignatures(inventory.warnings)) {
        const std::string key = lowerCase(guid);
        const bool wanted = guids.empty() || std::any_of(guids.begin(), guids.end(), [&](const auto& other) {
                                return lowerCase(other) == key;
                            });
        if (wanted) inventory.undecided.push_back({guid, names[key]});
    }
    inventory.complete = inventory.fault.empty() && !hasGaps(inventory.warnings, guids);
}

std::size_t countSignatures(const std::vector<SignatureFile>& files) {
    return std::accumulate(files.begin(), files.end(), std::size_t{0},
                           [](std::size_t sum, const SignatureFile& file) { return sum + file.count; });
}

SoftwareInventory evaluate(const Options& options, const std::vector<SignatureFile>& files) {
    const std::vector<Preset> presets = presetsOf(options, files);
    std::vector<Setting> settings = settingsOf(options);
    reportUnused(presets, files);
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
    progress.begin(static_cast<int>(countSignatures(files)), "signatures");
    const auto report = [&progress](const std::string& line) {
        progress.hide();
        printMessage(line);
    };
    SoftwareInventory inventory = evaluateFiles(
        library, output, scannerPath(toolkit.directory, kSoftwareScanner), files, options.guids, report);
    progress.end();
    inventory.scan = timer.facts();
    addCompleteness(inventory, options.guids, files);
    if (options.unmanaged) std::erase_if(inventory.results, isManaged);
    return inventory;
}

std::string listText(const std::vector<SignatureEntry>& entries, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return signatureJson(entries);
        case Format::Csv:
            return signatureCsv(entries, options.csvRaw ? CsvFormulas::Raw : CsvFormulas::Protected);
        default:
            return signatureTable(entries, tableStyle(options));
    }
}

}  // namespace

int runSoftware(const Options& options) {
    const std::vector<SignatureFile> files = readFiles(options);
    for (const std::string& guid : options.guids) requireSignature(files, guid);
    InventoryOutput output(options);
    const SoftwareInventory inventory = evaluate(options, files);
    for (const std::string& line : warningLines(inventory.warnings)) printMessage(line);
    reportUnmatched(inventory, options.guids);
    output.write(formatted(inventory, options));
    if (!inventory.fault.empty()) throw Failure(kExitFailed, inventory.fault);
    return hasUnexpectedGaps(inventory.warnings, options.guids) ? kExitUnread : EXIT_SUCCESS;
}

int runSignatureList(const Options& options) {
    std::vector<SignatureEntry> entries;
    for (SignatureFile& file : readFiles(options)) {
        if (!file.wellFormed)
            printMessage(
                fmt::format("warning: {} is not well-formed; 'zav sw --check' shows where", file.path));
        std::move(file.entries.begin(), file.entries.end(), std::back_inserter(entries));
    }
    InventoryOutput(options).write(listText(entries, options));
    return EXIT_SUCCESS;
}

int runSignatureCheck(const Options& options) {
    const std::vector<std::string> paths = filePaths(options);
    std::for_each(paths.begin(), paths.end(), readSignatureFile);  // throws if one cannot be read
    const Toolkit toolkit = selectToolkit(options, kSoftwareScanner);
    const CheckResult check = checkSignatures(scannerPath(toolkit.directory, kSoftwareScanner), paths);
    writeStandardOutput(check.text);
    return check.valid ? EXIT_SUCCESS : kExitFailed;
}

int runSignatureExplanation(const Options& options) {
    const std::vector<SignatureFile> files = readFiles(options);
    const std::vector<Preset> presets = presetsOf(options, files);
    const std::vector<Setting> settings = settingsOf(options);
    reportUnused(presets, files);
    const std::string guid = lowerCase(*options.explain);
    requireSignature(files, *options.explain);
    const std::string scanner =
        scannerPath(selectToolkit(options, kSoftwareScanner).directory, kSoftwareScanner);
    passScannedRoot(options, kSoftwareScanner);
    for (const SignatureFile& file : files) {
        if (file.wellFormed && !file.names.contains(guid)) continue;
        writeStandardOutput(
            printableLines(explainSignature(scanner, file.path, *options.explain, presets, settings)));
    }
    return EXIT_SUCCESS;
}

}  // namespace zavcli
