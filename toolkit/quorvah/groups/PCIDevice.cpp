#include <optional>
#include <string>
#include <vector>

#include "schema/groups/PCIDevice.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/DeviceIdsFile.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {
namespace {

constexpr char kDevices[] = "/sys/bus/pci/devices/";
constexpr char kSlots[] = "/sys/bus/pci/slots/";

// The `width` hexadecimal digits after "0x" in a file; empty if the file has another form.
std::string hexLine(const Root& root, const std::string& path, std::size_t width) {
    const std::string line = root.readLine(path);
    if (line.size() != width + 2 || line.substr(0, 2) != "0x") return {};
    if (line.find_first_not_of("0123456789abcdef", 2) != std::string::npos) return {};
    return line.substr(2);
}

// Kernels before 4.10 have no file `revision`. The number is also in the configuration space.
std::string revision(const Root& root, const std::string& path) {
    std::string line = hexLine(root, path + "revision", 2);
    if (!line.empty()) return line;
    static constexpr std::size_t kRevisionAt = 8;
    const std::optional<std::string> config = root.read(path + "config");
    if (!config || config->size() <= kRevisionAt) return {};
    return hexDigits(static_cast<unsigned char>((*config)[kRevisionAt]), 2);
}

// Empty for "Unknown" and for a width of 0 or 255, which the kernel writes for a link that it cannot query.
std::string known(const std::string& line) {
    const bool unknown = line.starts_with("Unknown") || line == "0" || line == "255";
    return unknown ? std::string() : line;
}

struct Slot {
    std::string name;
    std::string address;  // "0000:00:1f", without the function
};

std::vector<Slot> readSlots(const Root& root) {
    std::vector<Slot> slots;
    for (std::string& name : root.list(kSlots)) {
        std::string address = root.readLine(kSlots + name + "/address");
        if (!address.empty()) slots.push_back({std::move(name), std::move(address)});
    }
    return slots;
}

std::string slotOf(std::string_view deviceId, const std::vector<Slot>& slots) {
    const std::string_view device = deviceId.substr(0, deviceId.rfind('.'));
    for (const Slot& slot : slots) {
        if (slot.address == device) return slot.name;
    }
    return {};
}

// The name of the subclass, or else that of the class.
std::string_view className(DeviceIdsFile& ids, const std::string& code) {
    if (code.size() != 6) return {};
    const std::string_view subclass = ids.subclass(code.substr(0, 2), code.substr(2, 2));
    return subclass.empty() ? ids.baseClass(code.substr(0, 2)) : subclass;
}

void setNames(DeviceIdsFile& ids, Instance& device) {
    const std::string& vendor = device.get("VendorID");
    const std::string& id = device.get("PCIDeviceID");
    const std::string& subsystemVendor = device.get("SubsystemVendorID");
    const std::string& subsystem = device.get("SubsystemID");
    const std::string_view name = ids.device(vendor, id);
    std::string_view subsystemName = ids.subsystem(vendor, id, subsystemVendor, subsystem);
    // The maker of a board without ids of its own repeats those of the chip.
    if (subsystemName.empty() && subsystemVendor == vendor && subsystem == id) subsystemName = name;
    device.set("Name", name);
    device.set("Manufacturer", ids.vendor(vendor));
    device.set("ClassName", className(ids, device.get("ClassCode")));
    device.set("SubsystemName", subsystemName);
}

void setIds(const Root& root, const std::string& path, Instance& device) {
    device.set("PCIDeviceID", hexLine(root, path + "device", 4));
    device.set("VendorID", hexLine(root, path + "vendor", 4));
    device.set("RevisionID", revision(root, path));
    device.set("ClassCode", hexLine(root, path + "class", 6));
    const std::string subsystemVendor = hexLine(root, path + "subsystem_vendor", 4);
    const std::string subsystem = hexLine(root, path + "subsystem_device", 4);
    // Bridges and old boards have no subsystem, which reads as zeros.
    if (subsystemVendor == "0000" && subsystem == "0000") return;
    device.set("SubsystemID", subsystem);
    device.set("SubsystemVendorID", subsystemVendor);
}

void setPlace(const Root& root, const std::string& path, Instance& device) {
    device.set("DriverName", root.linkName(path + "driver"));
    device.set("NumaNode", root.readCount(path + "numa_node"));  // -1 means none
    device.set("IommuGroup", root.linkName(path + "iommu_group"));
    device.set("CurrentLinkSpeed", known(root.readLine(path + "current_link_speed")));
    device.set("MaxLinkSpeed", known(root.readLine(path + "max_link_speed")));
    device.set("CurrentLinkWidth", known(root.readLine(path + "current_link_width")));
    device.set("MaxLinkWidth", known(root.readLine(path + "max_link_width")));
    device.set("SriovParent", root.linkName(path + "physfn"));
    const std::string removable = root.readLine(path + "removable");
    if (removable == "removable" || removable == "fixed") device.set("Removable", removable == "removable");
}

constexpr const char* kSources[] = {"/sys/bus"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    DeviceIdsFile& ids = context.pciNames().ids();
    const std::vector<Slot> slots = readSlots(root);
    for (const std::string& name : root.list(kDevices)) {
        const std::optional<PciAddress> address = readPciAddress(name);
        if (!address) continue;
        Instance& device = data.add(name);
        device.set("BusNumber", address->bus);
        device.set("DeviceNumber", address->device);
        device.set("FunctionNumber", address->function);
        setIds(root, kDevices + name + "/", device);
        setPlace(root, kDevices + name + "/", device);
        device.set("PhysicalSlot", slotOf(name, slots));
        setNames(ids, device);
    }
}

}  // namespace

constexpr Group kPCIDevice{.displayName = "PCI Device",
                           .xmlName = "PCIDevice",
                           .fields = schema::kPCIDevice.fields,
                           .gather = gather,
                           .sources = kSources};

}  // namespace toolkit::quorvah
