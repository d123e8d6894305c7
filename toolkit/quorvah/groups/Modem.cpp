#include <map>
#include <string>
#include <vector>

#include "schema/groups/Modem.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

const std::string kUsb = "/sys/bus/usb/devices/";
const std::string kPci = "/sys/bus/pci/devices/";
const std::string kWwan = "/sys/class/wwan/";
const std::string kTerminals = "/sys/class/tty/";

// A modem, and the devices through which programs talk to it.
struct Modem {
    std::string bus;  // "USB", "PCI"
    std::vector<std::string> devices;
};
using Modems = std::map<std::string, Modem>;  // by the address of the device on its bus

// Interfaces of modems have the class "communications", the subclass "abstract control" and a protocol of modem commands.
// Boards that only imitate a serial port mostly state no protocol.
void findUsbModems(const Root& root, Modems& modems) {
    for (const std::string& name : root.list(kUsb)) {
        const std::size_t colon = name.find(':');
        if (colon == std::string::npos) continue;
        const std::string path = kUsb + name + "/";
        if (root.readLine(path + "bInterfaceClass") != "02") continue;
        const std::string protocol = root.readLine(path + "bInterfaceProtocol");
        const bool commands = protocol >= "01" && protocol <= "06";
        if (root.readLine(path + "bInterfaceSubClass") == "02" && commands)
            modems[name.substr(0, colon)].bus = "USB";
    }
}

void findPciModems(const Root& root, Modems& modems) {
    for (const std::string& address : root.list(kPci)) {
        if (root.readLine(kPci + address + "/class").starts_with("0x0703")) modems[address].bus = "PCI";
    }
}

// The address of the device behind an entry of a class.
std::string addressOf(const Root& root, const std::string& entry) {
    const std::string place = root.readLink(entry);
    const std::string usb(usbDeviceIn(place));
    return usb.empty() ? std::string(pciAddressIn(place)) : usb;
}

// The devices of the class are the modem, "wwan0", and its channels, "wwan0at0".
void findWwanModems(const Root& root, Modems& modems) {
    for (const std::string& name : root.list(kWwan)) {
        const std::string address = addressOf(root, kWwan + name);
        const bool usb = address.find(':') == std::string::npos;
        Modem& modem = modems[address.empty() ? name : address];
        if (!address.empty()) modem.bus = usb ? "USB" : "PCI";
        const bool channel = name.find_first_not_of("0123456789", 4) != std::string::npos;
        if (channel) modem.devices.push_back("/dev/" + name);
    }
}

void findTerminals(const Root& root, Modems& modems) {
    for (const std::string& name : root.list(kTerminals)) {
        if (!name.starts_with("ttyACM") && !name.starts_with("ttyUSB") && !name.starts_with("ttyS")) continue;
        const auto modem = modems.find(addressOf(root, kTerminals + name));
        if (modem != modems.end()) modem->second.devices.push_back("/dev/" + name);
    }
}

// The four digits after "0x".
std::string pciId(const Root& root, const std::string& path) {
    const std::string line = root.readLine(path);
    return line.size() == 6 && line.starts_with("0x") ? line.substr(2) : std::string();
}

void setNames(const GatheringContext& context, const std::string& address, const std::string& bus,
              Instance& modem) {
    const Root& root = context.root();
    if (bus == "USB") {
        const std::string path = kUsb + address + "/";
        const std::string vendor = root.readLine(path + "idVendor");
        std::string name = context.firmwareText(root.readLine(path + "product"));
        std::string maker = context.firmwareText(root.readLine(path + "manufacturer"));
        if (name.empty()) name = context.usbNames().ids().device(vendor, root.readLine(path + "idProduct"));
        if (maker.empty()) maker = context.usbNames().ids().vendor(vendor);
        modem.set("Name", name);
        modem.set("Manufacturer", maker);
        modem.set("Model", name);
    } else if (bus == "PCI") {
        const std::string vendor = pciId(root, kPci + address + "/vendor");
        const std::string_view name =
            context.pciNames().ids().device(vendor, pciId(root, kPci + address + "/device"));
        modem.set("Name", name);
        modem.set("Manufacturer", context.pciNames().ids().vendor(vendor));
        modem.set("Model", name);
    }
}

constexpr const char* kSources[] = {"/sys/bus", "/sys/class"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    Modems modems;
    findUsbModems(root, modems);
    findPciModems(root, modems);
    findWwanModems(root, modems);
    findTerminals(root, modems);
    for (const auto& [address, found] : modems) {
        Instance& modem = data.add(address);
        setNames(context, address, found.bus, modem);
        modem.set("AttachedTo", found.devices);
        modem.set("InterfaceType", found.bus);
    }
}

}  // namespace

constexpr Group kModem{.displayName = "Modem",
                       .xmlName = "Modem",
                       .fields = schema::kModem.fields,
                       .gather = gather,
                       .sources = kSources};

}  // namespace toolkit::quorvah
