#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

#include "cli/Commands.h"
#include "cli/CsvWriter.h"
#include "cli/Evaluation.h"
#include "cli/Explanation.h"
#include "cli/Failure.h"
#include "cli/JsonWriter.h"
#include "cli/Presets.h"
#include "cli/Reporter.h"
#include "cli/ScanRecord.h"
#include "cli/Session.h"
#include "cli/SignatureCheck.h"
#include "cli/SignaturesFile.h"
#include "cli/SoftwareTable.h"
#include "cli/Terminal.h"
#include "cli/Text.h"
#include "cli/Warnings.h"
#include "cli/Workspace.h"
#include "cli/XmlWriter.h"

namespace zavcli {

namespace {

std::string written(const SoftwareReport& report, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return jsonText(report);
        case Format::Csv:
            return csvText(report);
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

// Says of each identifier that was asked for in vain whether there is such a signature at all.
void tellMissing(const SoftwareReport& report, const std::vector<SignaturesFile>& files,
                 const std::vector<std::string>& guids) {
    for (const std::string& guid : guids) {
        const std::string wanted = lowerCase(guid);
        const bool found =
            std::any_of(report.results.begin(), report.results.end(),
                        [&](const Finding& finding) { return lowerCase(finding.guid) == wanted; });
        if (found) continue;
        const bool known = std::any_of(files.begin(), files.end(), [&](const SignaturesFile& file) {
            return file.names.contains(wanted);
        });
        complain(known ? fmt::format("the signature {} does not match", guid)
                       : fmt::format("no signature has the identifier {}", guid));
    }
}

SoftwareReport evaluate(const Options& options, const std::vector<SignaturesFile>& files) {
    const std::vector<Preset> presets = presetsOf(options, files);
    const std::vector<Setting> settings = settingsOf(options);
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
    return report;
}

}  // namespace

int software(const Options& options) {
    const std::vector<SignaturesFile> files = readFiles(options);
    Destination destination(options);
    const SoftwareReport report = evaluate(options, files);
    for (const Warning& warning : report.warnings) complain(warningText(warning));
    tellMissing(report, files, options.guids);
    destination.write(written(report, options));
    if (!report.fault.empty()) throw Failure(kExitFailed, report.fault);
    return EXIT_SUCCESS;
}

int checkSoftwareSignatures(const Options& options) {
    const std::vector<std::string> paths = signaturesPaths(options.signatures);
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
    const std::string guid = lowerCase(*options.explain);
    if (std::none_of(files.begin(), files.end(),
                     [&](const SignaturesFile& file) { return file.names.contains(guid); }))
        throw Failure(kExitBadUsage, fmt::format("no signature has the identifier {}", *options.explain));
    const std::string scanner =
        scannerPath(toolkitFor(options, kSoftwareScanner).directory, kSoftwareScanner);
    setScannedRoot(options, kSoftwareScanner);
    for (const SignaturesFile& file : files) {
        if (!file.names.contains(guid)) continue;
        writeStandardOutput(
            printableLines(explainSignature(scanner, file.path, *options.explain, presets, settings)));
    }
    return EXIT_SUCCESS;
}

}  // namespace zavcli
