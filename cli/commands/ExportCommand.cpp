#include <fmt/format.h>

#include <cstdlib>
#include <optional>

#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/diff/InventoryFile.h"
#include "cli/export/InventoryDatabase.h"
#include "cli/scan/Warnings.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

std::string valueOf(const SavedInventory& inventory, std::string_view groupName, std::string_view fieldName) {
    const Group* const group = inventory.find(groupName);
    if (group == nullptr || group->instances.empty()) return {};
    const Field* const field = findField(group->instances.front(), fieldName);
    return field == nullptr ? std::string() : field->value;
}

std::string hostOf(const SavedInventory& inventory, const Options& options) {
    if (options.host) return *options.host;
    std::string host = valueOf(inventory, "ComponentID", "Name");
    if (host.empty()) host = valueOf(inventory, "OperatingSystem", "CSName");
    if (host.empty())
        throw Failure(kExitFailed,
                      fmt::format("{} does not name its host; name it with --host", inventory.file));
    return host;
}

}  // namespace

int runExport(const Options& options) {
    if (options.host && options.saved.size() > 1)
        throw Failure(kExitBadUsage,
                      "--host names one host, but there are several --from (see 'zav export --help')");
    OutputFile file(options.database, OutputFile::Access::Owner);
    InventoryDatabase database(options.database);
    for (const std::string& path : options.saved) {
        const SavedInventory inventory = readSavedInventory(path);
        database.put(hostOf(inventory, options), inventory, nullptr);
    }
    bool unread = false;
    if (options.saved.empty()) {
        const HardwareInventory hardware = scanMachine(options, options.groups);
        for (const std::string& message : completenessMessages(hardware)) printMessage(message);
        unread = lacksRequestedData(hardware, !options.groups.empty());
        SavedInventory saved = parseInventory(jsonText(hardware, JsonValues::Text));
        saved.file = "this machine";
        std::optional<SoftwareInventory> software;
        if (!options.noSoftware) {
            software = evaluateSignatures(options, readSignatureFiles(options));
            printWarnings(*software, options);
            unread = unread || hasUnexpectedGaps(software->warnings, {});
        }
        database.put(hostOf(saved, options), saved, software ? &*software : nullptr);
    }
    file.commit(database.content());
    return unread ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
