#include <cstdlib>
#include <optional>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/diff/InventoryFile.h"
#include "cli/report/PageDocument.h"
#include "cli/report/PageTemplate.h"
#include "cli/scan/Warnings.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

// Null if the software can be shown.
const char* whyNoSoftware(const Options& options) {
    if (options.from) return "the page shows no software: a saved hardware inventory has none";
    if (options.sanitize) return "the page shows no software: its places may have names of users";
    return nullptr;
}

}  // namespace

int runReport(const Options& options) {
    const std::string page = readPageTemplate();
    InventoryOutput output(options);
    std::optional<SavedInventory> earlier;
    if (options.compare) earlier = readSavedInventory(*options.compare);
    std::optional<SavedInventory> hardware;
    std::optional<SoftwareInventory> software;
    bool unread = false;
    if (options.from) {
        hardware = readSavedInventory(*options.from);
    } else if (!options.noHardware) {
        const HardwareInventory inventory = scanMachine(options, {});
        for (const std::string& message : completenessMessages(inventory)) printMessage(message);
        unread = lacksRequestedData(inventory, false);
        hardware = parseInventory(jsonText(inventory, JsonValues::Text));
        hardware->file = "this scan";
    }
    const char* const reason = whyNoSoftware(options);
    if (reason != nullptr && !options.noSoftware) printMessage(reason);
    if (reason == nullptr && !options.noSoftware) {
        software = evaluateSignatures(options, readSignatureFiles(options));
        printWarnings(*software, options);
        unread = unread || hasUnexpectedGaps(software->warnings, {});
    }
    output.write(
        fillPage(page, pageDocument({hardware ? &*hardware : nullptr, software ? &*software : nullptr,
                                     earlier ? &*earlier : nullptr})));
    if (software && !software->fault.empty()) throw Failure(kExitFailed, software->fault);
    return unread ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
