#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(USBDevice, TextsOfTheDevicePrecedeTheDatabase) {
    const GroupData data = gatheredTree(kUSBDevice, "workstation");
    EXPECT_EQ((std::vector<std::string>{"1-3", "1-4", "usb1"}), keysOf(data));
    expectAll(data.group(), instanceOf(data, "usb1"),
              {{"DeviceID", "usb1"},
               {"Name", "xHCI Host Controller"},
               {"Manufacturer", "Linux 6.1 xhci-hcd"},
               {"SerialNumber", "0000:00:14.0"},
               {"USBVersion", "2.00"},
               {"ClassCode", "09"},
               {"SubclassCode", "00"},
               {"ProtocolCode", "01"},
               {"NumberOfConfigs", "1"},
               {"VendorId", "1d6b"},
               {"ProductId", "0002"},
               {"Release", "6.01"},
               {"Speed", "480000000"},
               {"MaxPower", "0"}});
    expectAll(data.group(), instanceOf(data, "1-3"),
              {{"DeviceID", "1-3"},
               {"Name", "Optical Mouse"},
               {"Manufacturer", "Mouse Maker"},
               {"USBVersion", "2.00"},
               {"ClassCode", "00"},
               {"SubclassCode", "00"},
               {"ProtocolCode", "00"},
               {"NumberOfConfigs", "1"},
               {"VendorId", "046d"},
               {"ProductId", "c077"},
               {"Release", "72.00"},
               {"Speed", "1500000"},
               {"MaxPower", "100"},
               {"Drivers", "usbhid"},
               {"InterfaceClasses", "030102"},
               {"Removable", "true"}});
}

TEST(USBDevice, OmitsRepeatedInterfacesAndPlaceholders) {
    const GroupData data = gatheredTree(kUSBDevice, "workstation");
    expectAll(data.group(), instanceOf(data, "1-4"),
              {{"DeviceID", "1-4"},
               {"Name", "Gigabit USB Adapter"},
               {"Manufacturer", "Adapter Maker"},
               {"VendorId", "0b95"},
               {"ProductId", "1790"},
               {"Drivers", "ax88179"},
               {"InterfaceClasses", "ffff00"}});
}

TEST(USBDeviceLive, DevicesMatchLsusb) {
    Rows theirs;
    // Without a bus lsusb fails.
    for (const std::string& line : linesOf("lsusb || test ! -e /sys/bus/usb/devices")) {
        const std::size_t id = line.find(": ID ");
        if (id != std::string::npos) theirs.push_back(line.substr(id + 5, 9));
    }
    Rows ours;
    const GroupData data = gatheredLive(kUSBDevice);
    for (const Instance& device : data.instances())
        ours.push_back(device.get("VendorId") + ":" + device.get("ProductId"));
    EXPECT_EQ(sorted(theirs), sorted(ours));
}

}  // namespace
}  // namespace toolkit::quorvah
