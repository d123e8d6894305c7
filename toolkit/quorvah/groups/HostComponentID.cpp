#include <string>

#include "schema/groups/HostComponentID.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Container.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/HyperVPairs.h"
#include "toolkit/quorvah/sources/Hypervisor.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"
#include "toolkit/quorvah/sources/MachineIdentity.h"

namespace toolkit::quorvah {

namespace {

// The lines about the machine, which are there in every partition and guest of an s390x machine.
void setSysinfo(const std::string& sysinfo, Instance& host) {
    host.set("Manufacturer", valueForKey(sysinfo, "Manufacturer"));
    host.set("ProductName", valueForKey(sysinfo, "Type"));
    host.set("SerialNumber", valueForKey(sysinfo, "Sequence Code"));
}

void setDeviceTree(const GatheringContext& context, Instance& host) {
    const Root& root = context.root();
    host.set("ProductName", context.firmwareText(deviceTreeText(root, "host-model")));
    host.set("SerialNumber", context.firmwareText(deviceTreeText(root, "host-serial")));
}

// What Hyper-V tells its guests, if their service that receives it runs.
void setPairs(const Root& root, Instance& host) {
    constexpr std::size_t kMaxPool = std::size_t{4} << 20;
    const std::string pool = root.read("/var/lib/hyperv/.kvp_pool_3", kMaxPool).value_or("");
    std::string name = hyperVValue(pool, "PhysicalHostNameFullyQualified");
    if (name.empty()) name = hyperVValue(pool, "PhysicalHostName");
    host.set("Name", name);
}

void setOwn(const GatheringContext& context, Instance& host) {
    const Root& root = context.root();
    const MachineIdentity identity = readMachineIdentity(context);
    host.set("UUID", identity.uuid);
    host.set("Manufacturer", identity.manufacturer);
    host.set("ProductName", identity.productName);
    host.set("SerialNumber", identity.serialNumber);
    // The name of a container is not that of its machine.
    if (!host.empty() && containerType(root).empty()) host.set("Name", hostName(root));
}

constexpr const char* kSources[] = {"/sys", "/proc/cpuinfo", "/proc/device-tree", "/proc/sysinfo",
                                    "/var/lib/hyperv"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::string sysinfo = root.read("/proc/sysinfo").value_or("");
    const auto fill = [&](Instance& host) {
        const auto ends = [&host](const char* source) {
            if (!host.empty()) host.set("Source", source);
            return !host.empty();
        };
        setSysinfo(sysinfo, host);
        if (ends("sysinfo")) return;
        setDeviceTree(context, host);
        if (ends("device-tree")) return;
        setPairs(root, host);
        if (ends("kvp")) return;
        if (!findHypervisor(root).present) setOwn(context, host);
        ends("self");
    };
    data.addOne(fill);
    if (data.instances().empty() && findHypervisor(root).present) data.notApplicable("unknown-host");
}

}  // namespace

constexpr Group kHostComponentID{.displayName = "HostComponentID",
                                 .xmlName = "HostComponentID",
                                 .fields = schema::kHostComponentID.fields,
                                 .gather = gather,
                                 .sources = kSources};

}  // namespace toolkit::quorvah
