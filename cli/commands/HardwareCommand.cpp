#include <unistd.h>

#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/ScanSetup.h"
#include "cli/scan/HardwareScan.h"
#include "cli/scan/LogPrinter.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

HardwareInventory scan(const Options& options, const Toolkit& toolkit, const std::string& root) {
    ProgressBar progress(isCapableTerminal(STDERR_FILENO));
    LogPrinter printer(options.verbosity, toolkit.source, progress);
    const Workspace workspace;
    LibraryHandle library(&printer, workspace, toolkit.directory);
    const std::vector<GroupName> groups = chooseGroups(library.groups(), options.groups);
    progress.begin(static_cast<int>(groups.size()));
    HardwareInventory inventory = scanHardware(library, toolkit.directory, root, groups);
    progress.end();
    return inventory;
}

}  // namespace

int runHardware(const Options& options) {
    const Toolkit toolkit = selectToolkit(options, kHardwareScanner);
    const std::string root = passScannedRoot(options, kHardwareScanner);
    InventoryOutput output(options);
    const HardwareInventory inventory = scan(options, toolkit, root);
    for (const std::string& message : completenessMessages(inventory)) printMessage(message);
    output.write(formatted(inventory, options));
    return lacksRequestedData(inventory, !options.groups.empty()) ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
