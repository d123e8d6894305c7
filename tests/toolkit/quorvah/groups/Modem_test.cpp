#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(Modem, ReportsUsbAndPciModemsWithTheirDevices) {
    const ScratchDir tree;
    tree.write("sys/bus/usb/devices/1-4/product", "56K Modem\n");
    tree.write("sys/bus/usb/devices/1-4/manufacturer", "Modem Maker\n");
    tree.write("sys/bus/usb/devices/1-4/idVendor", "0572\n");
    tree.write("sys/bus/usb/devices/1-4:1.0/bInterfaceClass", "02\n");
    tree.write("sys/bus/usb/devices/1-4:1.0/bInterfaceSubClass", "02\n");
    tree.write("sys/bus/usb/devices/1-4:1.0/bInterfaceProtocol", "01\n");
    tree.write("sys/bus/usb/devices/1-5:1.0/bInterfaceClass", "02\n");
    tree.write("sys/bus/usb/devices/1-5:1.0/bInterfaceSubClass", "02\n");
    tree.write("sys/bus/usb/devices/1-5:1.0/bInterfaceProtocol", "00\n");
    tree.link("sys/class/tty/ttyACM0", "../../devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.0/tty/ttyACM0");
    tree.link("sys/class/tty/ttyS0", "../../devices/pnp0/00:04/tty/ttyS0");
    tree.write("sys/bus/pci/devices/0000:02:00.0/class", "0x070300\n");
    tree.write("sys/bus/pci/devices/0000:03:00.0/class", "0x020000\n");
    tree.link("sys/class/wwan/wwan0", "../../devices/pci0000:00/0000:00:1c.0/0000:04:00.0/wwan/wwan0");
    tree.link("sys/class/wwan/wwan0at0",
              "../../devices/pci0000:00/0000:00:1c.0/0000:04:00.0/wwan/wwan0/wwan0at0");
    tree.link("sys/class/wwan/wwan0mbim0",
              "../../devices/pci0000:00/0000:00:1c.0/0000:04:00.0/wwan/wwan0/wwan0mbim0");
    const GroupData data = gatheredBelow(kModem, tree.path());
    ASSERT_EQ((std::vector<std::string>{"0000:02:00.0", "0000:04:00.0", "1-4"}), keysOf(data));
    expectAll(kModem, instanceOf(data, "1-4"),
              {{"DeviceID", "1-4"},
               {"Name", "56K Modem"},
               {"Manufacturer", "Modem Maker"},
               {"AttachedTo", "/dev/ttyACM0"},
               {"Model", "56K Modem"},
               {"InterfaceType", "USB"}});
    EXPECT_EQ("/dev/wwan0at0;/dev/wwan0mbim0", instanceOf(data, "0000:04:00.0").get("AttachedTo"));
    EXPECT_EQ("PCI", instanceOf(data, "0000:02:00.0").get("InterfaceType"));
}

}  // namespace
}  // namespace toolkit::quorvah
