#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/ScanSetup.h"
#include "cli/formats/GroupListWriter.h"
#include "cli/scan/HardwareScan.h"
#include "cli/scan/LibraryHandle.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/system/StandardStreams.h"
#include "schema/Catalogue.h"
#include "schema/FieldList.h"

namespace zavcli {

namespace {

// The toolkit directory. Empty if there is no usable one, because the list is useful without the scanner.
std::string toolkitDirectory(const Options& options) {
    try {
        return selectToolkit(options, kHardwareScanner).directory;
    } catch (const Failure&) {
        if (options.toolkit) throw;
        return "";
    }
}

// The scanner's report on what it gathers. Empty if the scanner fails.
Instance readAbilities(LibraryHandle& library, const std::string& toolkit, const Options& options) {
    if (toolkit.empty()) return {};
    try {
        return scanHardware(library, toolkit, "", {kScanInfo}).scanInfo;
    } catch (const Failure&) {
        if (options.toolkit) throw;
        return {};
    }
}

ListedGroup withAbility(const GroupName& group, const Instance& scanInfo) {
    GroupStatus status = statusOf(group.name, scanInfo);
    // A group that is in none of the lists is gathered on request.
    if (status.state == GroupState::Unknown && reportsAbilities(scanInfo))
        status.state = GroupState::Complete;
    return {group, status};
}

// Prints the fields of the named groups. They are those of the bundled scanner, and no scanner is needed to tell them.
void writeFields(const Options& options) {
    const Workspace workspace;
    LibraryHandle library(nullptr, workspace, "");
    std::vector<const schema::Group*> groups;
    for (const GroupName& group : chooseGroups(library.groups(), options.groups)) {
        const schema::Group* const described = schema::findGroup(group.name);
        if (described != nullptr) groups.push_back(described);
    }
    switch (options.format) {
        case Format::Json:
            return writeStandardOutput(schema::fieldJson(groups));
        case Format::Csv:
            return writeStandardOutput(fieldCsv(groups));
        default:
            return writeStandardOutput(schema::fieldText(groups));
    }
}

}  // namespace

int runGroups(const Options& options) {
    if (!options.groups.empty()) {
        writeFields(options);
        return EXIT_SUCCESS;
    }
    const std::string toolkit = toolkitDirectory(options);
    const Workspace workspace;
    LibraryHandle library(nullptr, workspace, toolkit);
    const std::vector<GroupName> names = library.groups();
    const Instance scanInfo = readAbilities(library, toolkit, options);
    std::vector<ListedGroup> groups;
    groups.reserve(names.size());
    for (const GroupName& group : names) groups.push_back(withAbility(group, scanInfo));
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
