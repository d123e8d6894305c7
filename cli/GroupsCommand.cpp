#include <cstdlib>
#include <exception>

#include "cli/Commands.h"
#include "cli/GroupWriter.h"
#include "cli/Interrupt.h"
#include "cli/Inventory.h"
#include "cli/Session.h"

namespace zavcli {

namespace {

class Silence : public Listener {
  public:
    void hear(const Message& /*message*/) noexcept override {}
};

// What the scanner says of its own abilities; nothing when it cannot be asked, for the list is worth having without.
Instance askScanner(const Options& options, const Probe& probe) {
    const Toolkit toolkit = toolkitFor(options, probe, kHardwareScanner);
    Silence silence;
    const Library library(silence, toolkit.directory);
    const InterruptGuard guard;
    return takeInventory(library, toolkit.directory, "", {kScanInfo}).scanInfo;
}

ListedGroup listed(const GroupName& group, const Instance& scanInfo) {
    GroupStatus status = statusOf(group.name, scanInfo);
    // What is in none of the lists was merely not asked for.
    if (status.state == GroupState::Unknown && tellsOfAbilities(scanInfo))
        status.state = GroupState::Complete;
    return {group, status};
}

}  // namespace

int listGroups(const Options& options) {
    Progress progress(false);
    const Probe probe = probeSetUp(options, progress);
    Instance scanInfo;
    try {
        scanInfo = askScanner(options, probe);
    } catch (const std::exception&) {
        if (options.toolkit) throw;
    }
    std::vector<ListedGroup> groups;
    for (const GroupName& group : probe.groups) groups.push_back(listed(group, scanInfo));
    switch (options.format) {
        case Format::Json:
            writeStandardOutput(groupJson(groups));
            break;
        case Format::Csv:
            writeStandardOutput(groupCsv(groups));
            break;
        default:
            writeStandardOutput(groupTable(groups));
    }
    return EXIT_SUCCESS;
}

}  // namespace zavcli
