#include <fmt/format.h>

#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/sbom/BillBuilder.h"
#include "cli/sbom/BillWriter.h"
#include "cli/sbom/FileHashes.h"
#include "cli/scan/Warnings.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

void addHashes(BillOfMaterials& bill, const std::string& root) {
    const FileHasher hasher(root);
    for (const std::string& path : evidentFiles(bill)) {
        std::string reason;
        if (std::optional<Hashes> hashes = hasher.hash(path, reason))
            bill.files.push_back({path, std::move(*hashes)});
        else if (reason != kNotRegular)
            printMessage(fmt::format("warning: {}: no hash: {}", path, reason));
    }
}

}  // namespace

int runSbom(const Options& options) {
    const DocumentTime time = documentTime();
    const std::vector<SignatureFile> files = readSignatureFiles(options);
    InventoryOutput output(options);
    const HardwareInventory hardware = scanMachine(options, {kSystemGroup, kPackagesGroup});
    const SoftwareInventory software = evaluateSignatures(options, files);
    for (const std::string& message : completenessMessages(hardware)) printMessage(message);
    printWarnings(software, options);
    BillOfMaterials bill = makeBill(hardware, software);
    if (options.hashes) addHashes(bill, software.scan.root);
    output.write(options.bill == BillFormat::Spdx ? spdxText(bill, time) : cycloneDxText(bill, time));
    if (!software.fault.empty()) throw Failure(kExitFailed, software.fault);
    const bool unread = lacksRequestedData(hardware, false) || hasUnexpectedGaps(software.warnings, {});
    return unread ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
