#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/Session.h"
#include "cli/formats/GroupWriter.h"
#include "cli/scan/Inventory.h"
#include "cli/scan/Library.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"

namespace zavcli {

namespace {

class Silence : public Listener {
  public:
    void hear(const Message& /*message*/) noexcept override {}
};

// The directory of the scanner; empty when it cannot be asked, for the list is worth having without.
std::string toolkitOf(const Options& options) {
    try {
        return toolkitFor(options, kHardwareScanner).directory;
    } catch (const Failure&) {
        if (options.toolkit) throw;
        return "";
    }
}

// What the scanner says of its own abilities.
Instance askScanner(Library& library, const std::string& toolkit, const Options& options) {
    if (toolkit.empty()) return {};
    try {
        return takeInventory(library, toolkit, "", {kScanInfo}).scanInfo;
    } catch (const Failure&) {
        if (options.toolkit) throw;
        return {};
    }
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
    const std::string toolkit = toolkitOf(options);
    const Workspace workspace;
    Silence silence;
    Library library(silence, workspace, toolkit);
    const std::vector<GroupName> names = library.groups();
    const Instance scanInfo = askScanner(library, toolkit, options);
    std::vector<ListedGroup> groups;
    groups.reserve(names.size());
    for (const GroupName& group : names) groups.push_back(listed(group, scanInfo));
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
