#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

const std::string kWorkstation = QUORVAH_TEST_TREES "/workstation";

TEST(USBDevice, TheDevicesOwnWordsComeBeforeTheDatabase) {
    const Report report = gatheredBelow("USBDevice", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"1-3", "1-4", "usb1"}), keysOf(report));
    EXPECT_EQ(
        "usb1|xHCI Host Controller|Linux 6.1 "
        "xhci-hcd|0000:00:14.0|2.00|09|00|01|1|1d6b|0002|6.01|480000000|0||||",
        joined(instanceOf(report, "usb1")));
    EXPECT_EQ(
        "1-3|Optical Mouse|Mouse Maker||2.00|00|00|00|1|046d|c077|72.00|1500000|100|usbhid|030102|true|",
        joined(instanceOf(report, "1-3")));
}

TEST(USBDevice, EqualInterfacesAndPlaceholdersLeaveNoTrace) {
    const Report report = gatheredBelow("USBDevice", kWorkstation);
    EXPECT_EQ("1-4|Gigabit USB Adapter|Adapter Maker|||||||0b95|1790||||ax88179|ffff00||",
              joined(instanceOf(report, "1-4")));
}

TEST(USBDeviceLive, DevicesAreThoseOfLsusb) {
    Rows theirs;
    // Without any bus lsusb ends with an error.
    for (const std::string& line : linesOf("lsusb || test ! -e /sys/bus/usb/devices")) {
        const std::size_t id = line.find(": ID ");
        if (id != std::string::npos) theirs.push_back(line.substr(id + 5, 9));
    }
    Rows ours;
    const Report report = gatheredLive("USBDevice");
    for (const Instance& device : report.instances())
        ours.push_back(device.get("VendorId") + ":" + device.get("ProductId"));
    EXPECT_EQ(sorted(theirs), sorted(ours));
}

}  // namespace
}  // namespace toolkit::quorvah
