#include "cli/scan/HardwareScan.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/scan/ErrorMessages.h"
#include "cli/scan/ScanFacts.h"
#include "cli/scan/Toolkit.h"
#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

// Why the scan failed, with the path of the scanner.
std::string failureMessage(int code, ZAVHwCtx* hardware, const std::string& scanner) {
    if (code != ZAV_ERROR_HW_SCANNER) return fmt::format("{} ({})", errorMessage(code), scanner);
    int status = -1;
    ZAV_hw_get_returncode(hardware, &status);
    return describeScannerExit(status, scanner);
}

Instance readInstance(ZAVHwCtx* hardware, int group, int index) {
    const wchar_t** names = nullptr;
    int count = 0;
    requireSuccess(ZAV_hw_get_fields(hardware, group, index, &names, &count));
    Instance instance;
    for (int i = 0; i < count; ++i) {
        const wchar_t* value = nullptr;
        requireSuccess(ZAV_hw_get_value(hardware, group, index, names[i], &value));
        const std::string name = toUtf8(names[i]);
        if (findField(instance, name) == nullptr) instance.push_back({name, toUtf8(value)});
    }
    return instance;
}

Group readGroup(ZAVHwCtx* hardware, const GroupName& group) {
    int count = 0;
    requireSuccess(ZAV_hw_get_group_instances(hardware, group.id, &count));
    Group result{group.id, group.name, {}, {}};
    for (int i = 0; i < count; ++i) result.instances.push_back(readInstance(hardware, group.id, i));
    return result;
}

void addMissing(std::vector<GroupName>& groups, const GroupName& added) {
    if (std::none_of(groups.begin(), groups.end(),
                     [&added](const GroupName& group) { return group.id == added.id; }))
        groups.push_back(added);
}

// The first instance of the group; empty if it has none.
Instance firstOf(const std::vector<Group>& groups, const GroupName& wanted) {
    for (const Group& group : groups) {
        if (group.id == wanted.id && !group.instances.empty()) return group.instances.front();
    }
    return {};
}

}  // namespace

std::vector<Group> scanGroups(LibraryHandle& library, const std::string& toolkit,
                              const std::vector<GroupName>& groups) {
    ZAVHwCtx* hardware = library.hardware();
    requireSuccess(ZAV_hw_setopt(hardware, ZAV_HW_ALL, 0));
    for (const GroupName& group : groups) requireSuccess(ZAV_hw_setopt(hardware, group.id, 1));
    const int code = ZAV_hw_run(hardware);
    if (code != ZAV_SUCCESS)
        throw Failure(kExitFailed, failureMessage(code, hardware, scannerPath(toolkit, kHardwareScanner)));
    std::vector<Group> results;
    results.reserve(groups.size());
    for (const GroupName& group : groups) results.push_back(readGroup(hardware, group));
    return results;
}

HardwareInventory scanHardware(LibraryHandle& library, const std::string& toolkit, const std::string& root,
                               const std::vector<GroupName>& groups, HostName host) {
    const ScanTimer timer(toolkit, root);
    std::vector<GroupName> scanned = groups;
    addMissing(scanned, kScanInfo);
    if (host == HostName::Always) addMissing(scanned, kComputer);
    HardwareInventory inventory;
    inventory.groups = scanGroups(library, toolkit, scanned);
    inventory.scan = timer.facts();
    inventory.scan.host = valueOf(firstOf(inventory.groups, kComputer), "Name");
    inventory.scanInfo = firstOf(inventory.groups, kScanInfo);
    inventory.groups.resize(groups.size());
    for (Group& group : inventory.groups) group.status = statusOf(group.name, inventory.scanInfo);
    return inventory;
}

}  // namespace zavcli
