#include <unistd.h>

#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareRemarks.h"
#include "cli/commands/Session.h"
#include "cli/formats/CsvWriter.h"
#include "cli/formats/JsonWriter.h"
#include "cli/formats/XmlWriter.h"
#include "cli/scan/Inventory.h"
#include "cli/scan/Reporter.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

std::string written(const Inventory& inventory, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return jsonText(inventory);
        case Format::Csv:
            return csvText(inventory, options.csvRaw ? CsvFormulas::Raw : CsvFormulas::Protected);
        case Format::Xml:
            return xmlText(inventory);
        case Format::Table:
            break;
    }
    return tableText(inventory, tableStyle(options));
}

Inventory scan(const Options& options, const Toolkit& toolkit, const std::string& root) {
    Progress progress(isCapableTerminal(STDERR_FILENO));
    Reporter reporter(options.verbosity, toolkit.source, progress);
    const Workspace workspace;
    Library library(reporter, workspace, toolkit.directory);
    const std::vector<GroupName> groups = chooseGroups(library.groups(), options.groups);
    progress.begin(static_cast<int>(groups.size()));
    Inventory inventory = takeInventory(library, toolkit.directory, root, groups);
    progress.end();
    return inventory;
}

}  // namespace

int hardware(const Options& options) {
    const Toolkit toolkit = toolkitFor(options, kHardwareScanner);
    const std::string root = setScannedRoot(options, kHardwareScanner);
    Destination destination(options);
    const Inventory inventory = scan(options, toolkit, root);
    for (const std::string& remark : remarksOn(inventory)) complain(remark);
    destination.write(written(inventory, options));
    return lacksWhatWasAskedFor(inventory, !options.groups.empty()) ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
