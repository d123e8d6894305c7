#include <net/if.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string>

#include "schema/groups/NetworkAdapter.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/Ethtool.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/IpAddresses.h"
#include "toolkit/quorvah/sources/LinkTechnology.h"
#include "toolkit/quorvah/sources/NetworkNamespace.h"

namespace toolkit::quorvah {
namespace {

constexpr char kInterfaces[] = "/sys/class/net/";

// Removes an optional prefix "0x".
std::string hexDigits(const std::string& line) {
    return line.substr(line.starts_with("0x") ? 2 : 0);
}

class AdapterNames {
  public:
    explicit AdapterNames(const GatheringContext& context) : context_(context) {}

    void setPci(std::string_view address, Instance& adapter) {
        set(context_.pciNames().ids(), "/sys/bus/pci/devices/" + std::string(address), "/vendor", "/device",
            adapter);
    }
    void setUsb(std::string_view name, Instance& adapter) {
        set(context_.usbNames().ids(), "/sys/bus/usb/devices/" + std::string(name), "/idVendor", "/idProduct",
            adapter);
    }

  private:
    // A USB adapter has texts of its own.
    void set(DeviceIdsFile& ids, const std::string& device, const char* vendorFile, const char* deviceFile,
             Instance& adapter) const {
        const Root& root = context_.root();
        const std::string vendor = hexDigits(root.readLine(device + vendorFile));
        const std::string id = hexDigits(root.readLine(device + deviceFile));
        const std::string product = root.readLine(device + "/product");
        const std::string manufacturer = root.readLine(device + "/manufacturer");
        adapter.set("Description", product.empty() ? ids.device(vendor, id) : std::string_view(product));
        adapter.set("Manufacturer",
                    manufacturer.empty() ? ids.vendor(vendor) : std::string_view(manufacturer));
    }

    const GatheringContext& context_;
};

// Tries the link of the interface and that of its device, because a captured tree may have only one of them.
void setBus(const Root& root, const std::string& path, AdapterNames& names, Instance& adapter) {
    for (const std::string& link :
         {root.readLink(path.substr(0, path.size() - 1)), root.readLink(path + "device")}) {
        const std::string_view usb = usbDeviceIn(link);
        const std::string_view pci = pciAddressIn(link);
        if (usb.empty() && pci.empty()) continue;
        adapter.set("BusAddress", usb.empty() ? pci : usb);
        if (usb.empty()) {
            names.setPci(pci, adapter);
        } else {
            names.setUsb(usb, adapter);
        }
        return;
    }
}

// The ARPHRD_ number of the interface; -1 if it is unknown.
int typeOf(Count number) {
    constexpr std::uint64_t kMaxType = 65535;
    return number && *number <= kMaxType ? static_cast<int>(*number) : -1;
}

void setTechnology(const Root& root, const std::string& path, const std::string& name, Instance& adapter) {
    const std::optional<std::string> uevent = root.read(path + "uevent");
    LinkTraits traits;
    std::string_view rest = uevent ? std::string_view(*uevent) : std::string_view();
    std::string_view line;
    while (nextLine(rest, line)) {
        if (takeField(line, '=') == "DEVTYPE") traits.devType = line;
    }
    const std::string driver = adapter.get("DriverName");
    traits.type = typeOf(root.readCount(path + "type"));
    traits.hasDevice = root.exists(path + "device");
    traits.wireless = root.exists(path + "wireless") || root.exists(path + "phy80211");
    traits.bridge = root.exists(path + "bridge");
    traits.bonding = root.exists(path + "bonding");
    traits.tun = root.exists(path + "tun_flags");
    traits.driver = driver;
    traits.name = name;
    adapter.set("LinkTechnology", linkTechnology(traits));
    adapter.set("Physical", traits.hasDevice);
}

void setLink(const Root& root, const std::string& path, Instance& adapter) {
    // For a link that is down or has no known speed the kernel writes -1, signed or unsigned. Reading the file fails
    // if the interface is down.
    const Count megabits = root.readCount(path + "speed");
    if (megabits && *megabits > 0 && *megabits < 0xFFFFFFFF)
        adapter.set("Speed", product(megabits, 1'000'000));
    const std::string duplex = root.readLine(path + "duplex");
    if (duplex == "full" || duplex == "half") adapter.set("FullDuplex", duplex == "full");
    if (const Count flags = readCount(hexDigits(root.readLine(path + "flags")), 16))
        adapter.set("EnabledState", (*flags & IFF_UP) != 0 ? "Enabled" : "Disabled");
    constexpr std::string_view kStates[] = {"up",      "down",      "dormant", "lowerlayerdown",
                                            "testing", "notpresent"};
    const std::string state = root.readLine(path + "operstate");
    if (std::ranges::find(kStates, state) != std::end(kStates)) adapter.set("OperationalStatus", state);
    adapter.set("ActiveMaximumTransmissionUnit", root.readCount(path + "mtu"));
    adapter.set("Master", root.linkName(path + "master"));
}

void setDriverFromFiles(const Root& root, const std::string& path, const std::string& address,
                        Instance& adapter) {
    const std::string driver = root.linkName(path + "device/driver");
    adapter.set("DriverName", driver);
    if (!driver.empty()) adapter.set("DriverVersion", root.readLine("/sys/module/" + driver + "/version"));
    const bool ownAddress = root.readCount(path + "addr_assign_type") == 0;
    if (ownAddress && root.exists(path + "device")) adapter.set("PermanentAddress", address);
}

// Most drivers of USB adapters give a description of the driver in place of a version of the firmware.
bool tellsFirmware(const Instance& adapter, const DriverInfo& driver, bool wireless) {
    const bool usb = !usbDeviceIn(adapter.get("BusAddress")).empty();
    return !usb || wireless || driver.name == "r8152" || driver.name == "aqc111";
}

void setDriver(const Ethtool& ethtool, const Root& root, const std::string& path, const std::string& name,
               Instance& adapter) {
    const bool hasDevice = root.exists(path + "device");
    if (const std::optional<DriverInfo> driver = ethtool.driver(name)) {
        adapter.set("DriverName", driver->name);
        adapter.set("DriverVersion", driver->version);
        // A bond gives the version of its interface to programs.
        if (hasDevice && tellsFirmware(adapter, *driver, root.exists(path + "phy80211")))
            adapter.set("FirmwareVersion", driver->firmwareVersion);
    }
    // The address of a tunnel is that of its end.
    if (!hasDevice) return;
    const std::string address = ethtool.permanentAddress(name);
    if (!address.empty()) adapter.set("PermanentAddress", address);
}

constexpr const char* kSources[] = {"/sys/class/net"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    AdapterNames names(context);
    const std::optional<Ethtool> ethtool = root.live() ? std::make_optional<Ethtool>() : std::nullopt;
    const NetworkNamespace own;
    for (const std::string& name : root.list(kInterfaces)) {
        const std::string path = kInterfaces + name + "/";
        if (!root.isDirectory(path)) continue;  // a file such as bonding_masters
        if (root.live() && !own.has(root, name)) {
            data.partial("other-namespace");
            continue;
        }
        Instance& adapter = data.add(name);
        const std::string address = macAddress(root, name);
        setBus(root, path, names, adapter);
        adapter.set("NetworkAddresses", address);
        setLink(root, path, adapter);
        setDriverFromFiles(root, path, address, adapter);
        if (ethtool) setDriver(*ethtool, root, path, name, adapter);
        setTechnology(root, path, name, adapter);
    }
}

}  // namespace

constexpr Group kNetworkAdapter{.displayName = "Network Adapter",
                                .xmlName = "NetworkAdapter",
                                .fields = schema::kNetworkAdapter.fields,
                                .gather = gather,
                                .sources = kSources};

}  // namespace toolkit::quorvah
