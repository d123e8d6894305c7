#include <string>

#include "schema/groups/VirtualMachineGuest.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Container.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/Hypervisor.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

// The identifier of this virtual machine as its hypervisor shows it to the guest.
std::string machineIdentifier(const GatheringContext& context) {
    const Root& root = context.root();
    std::string uuid = dmiUuid(context);
    if (uuid.empty()) uuid = context.firmwareText(root.readLine("/sys/hypervisor/uuid"));
    if (uuid.empty()) uuid = valueForKey(root.read("/proc/sysinfo").value_or(""), "VM00 UUID");
    if (uuid.empty()) uuid = deviceTreeText(root, "vm,uuid");
    return uuid;
}

// The cloud provider: what cloud-init found, or else what the firmware texts show.
std::string cloudPlatform(const Root& root) {
    std::string id = root.readLine("/run/cloud-init/cloud-id");
    if (!id.empty()) return id;
    const struct {
        const char* file;
        std::string_view mark;
        const char* platform;
    } marks[] = {
        {"sys_vendor", "Amazon EC2", "aws"},
        {"product_version", "amazon", "aws"},
        {"bios_vendor", "Amazon EC2", "aws"},
        {"chassis_asset_tag", "7783-7084-3265-9085-8269-3286-77", "azure"},
        {"product_name", "Google Compute Engine", "gce"},
        {"chassis_asset_tag", "OracleCloud.com", "oracle"},
        {"sys_vendor", "Alibaba Cloud", "aliyun"},
        {"sys_vendor", "DigitalOcean", "digitalocean"},
        {"sys_vendor", "Hetzner", "hetzner"},
        {"product_name", "OpenStack", "openstack"},
    };
    for (const auto& [file, mark, platform] : marks) {
        if (dmiLine(root, file).find(mark) != std::string::npos) return platform;
    }
    return {};
}

constexpr const char* kSources[] = {"/proc/cpuinfo", "/sys/class/dmi/id", "/sys/devices/virtual/dmi/id",
                                    "/sys/hypervisor", "/proc/device-tree"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::string container = containerType(root);
    const Hypervisor hypervisor = findHypervisor(root);
    if (container.empty() && !hypervisor.present) return;
    Instance& guest = data.add(container.empty() ? machineIdentifier(context) : containerId(root));
    guest.set("VirtualSystemType", container.empty() ? hypervisor.type : "container");
    if (container.empty() && hypervisor.typeDenied) data.partial("permission");
    guest.set("HypervisorVendor", hypervisor.vendor);
    guest.set("HypervisorVersion", hypervisor.version);
    guest.set("ContainerType", container);
    if (hypervisor.present) guest.set("VirtualizationMode", hypervisor.paravirtual ? "para" : "full");
    guest.set("ClockSource",
              root.readLine("/sys/devices/system/clocksource/clocksource0/current_clocksource"));
    guest.set("CloudPlatform", cloudPlatform(root));
}

}  // namespace

constexpr Group kVirtualMachineGuest{.displayName = "VirtualMachineGuest",
                                     .xmlName = "VirtualMachineGuest",
                                     .fields = schema::kVirtualMachineGuest.fields,
                                     .gather = gather,
                                     .sources = kSources};

}  // namespace toolkit::quorvah
