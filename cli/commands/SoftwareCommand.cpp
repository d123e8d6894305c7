#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "cli/commands/Commands.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/formats/SignatureListWriter.h"
#include "cli/scan/ProductIdentity.h"
#include "cli/scan/SignatureDiagnostics.h"
#include "cli/scan/Warnings.h"
#include "cli/system/Failure.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

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

bool isManaged(const MatchedSignature& match) {
    return identityOf(match).packaging == Packaging::Owned;
}

std::string listText(const std::vector<SignatureEntry>& entries, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return signatureJson(entries);
        case Format::Yaml:
            return yamlText(signatureJson(entries));
        case Format::Csv:
            return signatureCsv(entries, options.csvRaw ? CsvFormulas::Raw : CsvFormulas::Protected);
        default:
            return signatureTable(entries, tableStyle(options));
    }
}

}  // namespace

int runSoftware(const Options& options) {
    const std::vector<SignatureFile> files = readSignatureFiles(options);
    for (const std::string& guid : options.guids) requireSignature(files, guid);
    InventoryOutput output(options);
    SoftwareInventory inventory = evaluateSignatures(options, files);
    if (options.unmanaged) std::erase_if(inventory.results, isManaged);
    printWarnings(inventory, options);
    reportUnmatched(inventory, options.guids);
    output.writeInventory(inventory);
    if (!inventory.fault.empty()) throw Failure(kExitFailed, inventory.fault);
    return hasUnexpectedGaps(inventory.warnings, options.guids) ? kExitUnread : EXIT_SUCCESS;
}

int runSignatureList(const Options& options) {
    std::vector<SignatureEntry> entries;
    for (SignatureFile& file : readSignatureFiles(options)) {
        if (!file.wellFormed)
            printMessage(
                fmt::format("warning: {} is not well-formed; 'zav sw --check' shows where", file.path));
        std::move(file.entries.begin(), file.entries.end(), std::back_inserter(entries));
    }
    InventoryOutput(options).write(listText(entries, options));
    return EXIT_SUCCESS;
}

int runSignatureCheck(const Options& options) {
    const std::vector<std::string> paths = signaturePaths(options);
    std::for_each(paths.begin(), paths.end(), readSignatureFile);  // throws if one cannot be read
    const Toolkit toolkit = selectToolkit(options, kSoftwareScanner);
    const CheckResult check = checkSignatures(scannerPath(toolkit.directory, kSoftwareScanner), paths);
    writeStandardOutput(check.text);
    return check.valid ? EXIT_SUCCESS : kExitFailed;
}

int runSignatureExplanation(const Options& options) {
    const std::vector<SignatureFile> files = readSignatureFiles(options);
    const auto [presets, settings] = evaluationOptions(options, files);
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
