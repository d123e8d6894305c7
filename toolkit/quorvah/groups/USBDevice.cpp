#include <algorithm>
#include <string>
#include <vector>

#include "schema/groups/USBDevice.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DeviceIdsFile.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/UsbAttributes.h"

namespace toolkit::quorvah {
namespace {

constexpr char kDevices[] = "/sys/bus/usb/devices/";

void addOnce(std::vector<std::string>& values, std::string value) {
    if (value.empty() || std::find(values.begin(), values.end(), value) != values.end()) return;
    values.push_back(std::move(value));
}

// Prefers the texts of the device. Many devices have none.
void setNames(const Root& root, const std::string& path, DeviceIdsFile& ids, Instance& device) {
    const std::string& vendor = device.get("VendorId");
    const std::string product = root.readLine(path + "product");
    const std::string manufacturer = root.readLine(path + "manufacturer");
    device.set("Name", product.empty() ? std::string(ids.device(vendor, device.get("ProductId"))) : product);
    device.set("Manufacturer", manufacturer.empty() ? std::string(ids.vendor(vendor)) : manufacturer);
}

void setDescriptor(const Root& root, const std::string& path, Instance& device) {
    device.set("VendorId", root.readLine(path + "idVendor"));
    device.set("ProductId", root.readLine(path + "idProduct"));
    device.set("USBVersion", root.readLine(path + "version"));
    device.set("ClassCode", root.readLine(path + "bDeviceClass"));
    device.set("SubclassCode", root.readLine(path + "bDeviceSubClass"));
    device.set("ProtocolCode", root.readLine(path + "bDeviceProtocol"));
    device.set("NumberOfConfigs", root.readCount(path + "bNumConfigurations"));
    device.set("Release", usbRelease(root.readLine(path + "bcdDevice")));
    device.set("Speed", usbSpeed(root.readLine(path + "speed")));
    device.set("MaxPower", usbPower(root.readLine(path + "bMaxPower")));
    const std::string removable = root.readLine(path + "removable");
    if (removable == "removable" || removable == "fixed") device.set("Removable", removable == "removable");
}

// The interfaces of the device "1-1.2" are "1-1.2:1.0" and so on. Those of the root hub "usb1" are "1-0:1.0" and so
// on.
std::string interfacePrefix(const std::string& name) {
    return (name.substr(0, 3) == "usb" ? name.substr(3) + "-0" : name) + ":";
}

void setInterfaces(const Root& root, const std::string& name, const std::vector<std::string>& all,
                   Instance& device) {
    const std::string prefix = interfacePrefix(name);
    std::vector<std::string> drivers;
    std::vector<std::string> classes;
    for (const std::string& interface : all) {
        if (interface.compare(0, prefix.size(), prefix) != 0) continue;
        const std::string path = kDevices + interface + "/";
        addOnce(drivers, root.linkName(path + "driver"));
        addOnce(classes, root.readLine(path + "bInterfaceClass") +
                             root.readLine(path + "bInterfaceSubClass") +
                             root.readLine(path + "bInterfaceProtocol"));
    }
    device.set("Drivers", drivers);
    device.set("InterfaceClasses", classes);
}

constexpr const char* kSources[] = {"/sys/bus"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::vector<std::string> names = root.list(kDevices);
    if (names.empty()) return;
    DeviceIdsFile& ids = context.usbNames().ids();
    for (const std::string& name : names) {
        if (name.find(':') != std::string::npos) continue;
        const std::string path = kDevices + name + "/";
        Instance& device = data.add(name);
        setDescriptor(root, path, device);
        device.set("SerialNumber", context.firmwareText(root.readLine(path + "serial")));
        setNames(root, path, ids, device);
        setInterfaces(root, name, names, device);
    }
}

}  // namespace

constexpr Group kUSBDevice{.displayName = "USB Device",
                           .xmlName = "USBDevice",
                           .fields = schema::kUSBDevice.fields,
                           .gather = gather,
                           .sources = kSources};

}  // namespace toolkit::quorvah
