#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "cli/commands/Commands.h"
#include "cli/commands/Session.h"
#include "cli/formats/CsvWriter.h"
#include "cli/formats/JsonWriter.h"
#include "cli/formats/SoftwareTable.h"
#include "cli/formats/XmlWriter.h"
#include "cli/scan/Evaluation.h"
#include "cli/scan/Explanation.h"
#include "cli/scan/Presets.h"
#include "cli/scan/Reporter.h"
#include "cli/scan/ScanRecord.h"
#include "cli/scan/SignatureCheck.h"
#include "cli/scan/SignaturesFile.h"
#include "cli/scan/Warnings.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

std::string written(const SoftwareReport& report, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return jsonText(report);
        case Format::Csv:
            return csvText(report, options.csvRaw ? CsvFormulas::Raw : CsvFormulas::Protected);
        case Format::Xml:
            return xmlText(report);
        case Format::Table:
            break;
    }
    return tableText(report, tableStyle(options));
}

std::vector<SignaturesFile> readFiles(const Options& options) {
    std::vector<SignaturesFile> files;
    for (const std::string& path : signaturesPaths(options.signatures))
        files.push_back(readSignaturesFile(path));
    return files;
}

std::vector<Preset> presetsOf(const Options& options, const std::vector<SignaturesFile>& files) {
    Identifiers identifiers;
    for (const SignaturesFile& file : files) {
        for (const auto& [guid, name] : file.names) identifiers.insert(guid);
    }
    return parsePresets(options.variables, identifiers);
}

std::vector<Setting> settingsOf(const Options& options) {
    std::vector<Setting> settings;
    for (const std::string& text : options.settings) settings.push_back(parseSetting(text));
    return settings;
}

bool isIn(const std::vector<SignaturesFile>& files, const std::string& guid) {
    const std::string wanted = lowerCase(guid);
    return std::any_of(files.begin(), files.end(),
                       [&](const SignaturesFile& file) { return file.names.contains(wanted); });
}

// A file that is not well-formed may hold any; what is wrong with it is for the scanner to say.
void requireSignature(const std::vector<SignaturesFile>& files, const std::string& guid) {
    const bool allRead =
        std::all_of(files.begin(), files.end(), [](const SignaturesFile& file) { return file.wellFormed; });
    if (allRead && !isIn(files, guid))
        throw Failure(kExitBadUsage, fmt::format("no signature has the identifier {}", guid));
}

// Says of each identifier that was asked for in vain that it is so.
void tellMissing(const SoftwareReport& report, const std::vector<std::string>& guids) {
    const auto isAmong = [](const auto& items, const std::string& guid) {
        return std::any_of(items.begin(), items.end(),
                           [&](const auto& item) { return lowerCase(item.guid) == lowerCase(guid); });
    };
    for (const std::string& guid : guids) {
        if (!isAmong(report.results, guid) && !isAmong(report.undecided, guid))
            complain(fmt::format("the signature {} does not match", guid));
    }
}

bool isUsed(const Preset& preset, const std::vector<SignaturesFile>& files) {
    const std::string guid = lowerCase(preset.guid);
    return std::any_of(files.begin(), files.end(), [&](const SignaturesFile& file) {
        return std::any_of(file.variables.begin(), file.variables.end(), [&](const auto& uses) {
            return (guid.empty() || guid == uses.first) && uses.second.contains(preset.name);
        });
    });
}

void tellUnused(const std::vector<Preset>& presets, const std::vector<SignaturesFile>& files) {
    for (const Preset& preset : presets) {
        if (isUsed(preset, files)) continue;
        complain(preset.guid.empty()
                     ? fmt::format("warning: no signature uses the variable '{}'", preset.name)
                     : fmt::format("warning: the signature {} does not use the variable '{}'", preset.guid,
                                   preset.name));
    }
}

// Notes what the warnings say of the completeness of the results.
void noteGaps(SoftwareReport& report, const std::vector<std::string>& guids,
              const std::vector<SignaturesFile>& files) {
    std::map<std::string, std::string> names;
    for (const SignaturesFile& file : files) {
        for (const auto& [guid, name] : file.names) noteName(names, guid, name);
    }
    for (const std::string& guid : undecidedSignatures(report.warnings)) {
        const std::string folded = lowerCase(guid);
        const bool wanted = guids.empty() || std::any_of(guids.begin(), guids.end(), [&](const auto& other) {
                                return lowerCase(other) == folded;
                            });
        if (wanted) report.undecided.push_back({guid, names[folded]});
    }
    report.complete = report.fault.empty() && !tellOfGaps(report.warnings, guids);
}

SoftwareReport evaluate(const Options& options, const std::vector<SignaturesFile>& files) {
    const std::vector<Preset> presets = presetsOf(options, files);
    const std::vector<Setting> settings = settingsOf(options);
    tellUnused(presets, files);
    const Toolkit toolkit = toolkitFor(options, kSoftwareScanner);
    const std::string root = setScannedRoot(options, kSoftwareScanner);

    Progress progress(false);
    Reporter reporter(options.verbosity, toolkit.source, progress);
    ScannerLines lines(reporter);
    const Workspace workspace;
    Library library(lines, workspace, toolkit.directory);
    preset(library, presets, settings);
    const ScanRecord record(toolkit.directory, root);
    SoftwareReport report =
        evaluateFiles(library, lines, scannerPath(toolkit.directory, kSoftwareScanner), files, options.guids);
    report.scan = record.facts();
    noteGaps(report, options.guids, files);
    return report;
}

}  // namespace

int software(const Options& options) {
    const std::vector<SignaturesFile> files = readFiles(options);
    for (const std::string& guid : options.guids) requireSignature(files, guid);
    Destination destination(options);
    const SoftwareReport report = evaluate(options, files);
    for (const std::string& line : warningLines(report.warnings)) complain(line);
    tellMissing(report, options.guids);
    destination.write(written(report, options));
    if (!report.fault.empty()) throw Failure(kExitFailed, report.fault);
    return tellOfUnusualGaps(report.warnings, options.guids) ? kExitUnread : EXIT_SUCCESS;
}

int checkSoftwareSignatures(const Options& options) {
    const std::vector<std::string> paths = signaturesPaths(options.signatures);
    std::for_each(paths.begin(), paths.end(), readSignaturesFile);  // refuses what no scanner needs to see
    const Toolkit toolkit = toolkitFor(options, kSoftwareScanner);
    const CheckedSignatures checked =
        checkSignatures(scannerPath(toolkit.directory, kSoftwareScanner), paths);
    writeStandardOutput(checked.text);
    return checked.valid ? EXIT_SUCCESS : kExitFailed;
}

int explainSoftwareSignature(const Options& options) {
    const std::vector<SignaturesFile> files = readFiles(options);
    const std::vector<Preset> presets = presetsOf(options, files);
    const std::vector<Setting> settings = settingsOf(options);
    tellUnused(presets, files);
    const std::string guid = lowerCase(*options.explain);
    requireSignature(files, *options.explain);
    const std::string scanner =
        scannerPath(toolkitFor(options, kSoftwareScanner).directory, kSoftwareScanner);
    setScannedRoot(options, kSoftwareScanner);
    for (const SignaturesFile& file : files) {
        if (file.wellFormed && !file.names.contains(guid)) continue;
        writeStandardOutput(
            printableLines(explainSignature(scanner, file.path, *options.explain, presets, settings)));
    }
    return EXIT_SUCCESS;
}

}  // namespace zavcli
