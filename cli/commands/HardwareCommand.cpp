#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

int runHardware(const Options& options) {
    InventoryOutput output(options);
    const HardwareInventory inventory = scanMachine(options, options.groups);
    for (const std::string& message : completenessMessages(inventory)) printMessage(message);
    output.writeInventory(inventory);
    return lacksRequestedData(inventory, !options.groups.empty()) ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
