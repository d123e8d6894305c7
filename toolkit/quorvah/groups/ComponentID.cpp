#include <string>

#include "schema/groups/ComponentID.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/MachineIdentity.h"

namespace toolkit::quorvah {

namespace {

constexpr const char* kSources[] = {"/sys/class/dmi/id", "/sys/devices/virtual/dmi/id",
                                    "/sys/firmware",     "/proc/device-tree",
                                    "/proc/sysinfo",     "/proc/cpuinfo",
                                    "/etc/machine-id"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    data.addOne([&](Instance& system) {
        const MachineIdentity identity = readMachineIdentity(context);
        system.set("UUID", identity.uuid);
        system.set("Manufacturer", identity.manufacturer);
        system.set("ProductName", identity.productName);
        system.set("Version", identity.version);
        system.set("SerialNumber", identity.serialNumber);
        system.set("SKUNumber", identity.skuNumber);
        system.set("Family", identity.family);
        system.set("Name", hostName(root));
        const std::string machine = root.readLine("/etc/machine-id");
        if (machine != "uninitialized") system.set("MachineId", machine);
        system.set("BootId", root.readLine("/proc/sys/kernel/random/boot_id"));
    });
}

}  // namespace

constexpr Group kComponentID{.displayName = "ComponentID",
                             .xmlName = "ComponentID",
                             .fields = schema::kComponentID.fields,
                             .gather = gather,
                             .sources = kSources};

}  // namespace toolkit::quorvah
