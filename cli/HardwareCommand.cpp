#include <unistd.h>

#include <cstdlib>

#include "cli/Commands.h"
#include "cli/CsvWriter.h"
#include "cli/Failure.h"
#include "cli/HardwareRemarks.h"
#include "cli/Interrupt.h"
#include "cli/Inventory.h"
#include "cli/JsonWriter.h"
#include "cli/Reporter.h"
#include "cli/Session.h"
#include "cli/Terminal.h"
#include "cli/XmlWriter.h"

namespace zavcli {

namespace {

std::string written(const Inventory& inventory, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return jsonText(inventory);
        case Format::Csv:
            return csvText(inventory);
        case Format::Xml:
            return xmlText(inventory);
        case Format::Table:
            break;
    }
    return tableText(inventory, tableStyle(options));
}

Inventory scan(const Library& library, const Toolkit& toolkit, const std::string& root,
               const std::vector<GroupName>& groups, Progress& progress) {
    const InterruptGuard guard;
    progress.begin(static_cast<int>(groups.size()));
    Inventory inventory = takeInventory(library, toolkit.directory, root, groups);
    progress.end();
    return inventory;
}

}  // namespace

int hardware(const Options& options) {
    Progress progress(isCapableTerminal(STDERR_FILENO));
    const Probe probe = probeSetUp(options, progress);
    const std::vector<GroupName> groups = chooseGroups(probe.groups, options.groups);
    const Toolkit toolkit = toolkitFor(options, probe, kHardwareScanner);
    const std::string root = setScannedRoot(options, kHardwareScanner);
    Destination destination(options);

    Reporter reporter(options.verbosity, toolkit.source, progress);
    const Library library(reporter, toolkit.directory);
    const Inventory inventory = scan(library, toolkit, root, groups, progress);
    for (const std::string& remark : remarksOn(inventory)) complain(remark);
    destination.write(written(inventory, options));
    return lacksWhatWasAskedFor(inventory, !options.groups.empty()) ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
