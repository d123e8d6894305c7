#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/formats/MetricsWriter.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

// Ansible drops the facts of a script that does not end with status 0, and the document tells what is incomplete. So does the
// metric of each group.
int runFacts(const Options& options) {
    InventoryOutput output(options);
    const bool metrics = options.facts == FactFormat::Prometheus;
    const HardwareInventory inventory =
        scanMachine(options, metrics && options.groups.empty() ? metricGroups() : options.groups);
    for (const std::string& message : completenessMessages(inventory)) printMessage(message);
    output.write(metrics ? metricsText(inventory) : jsonLine(inventory, JsonValues::Typed));
    return EXIT_SUCCESS;
}

}  // namespace zavcli
