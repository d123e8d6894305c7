#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(SerialPort, ReportsUsedPortsOnly) {
    const ScratchDir tree;
    const std::string used = "sys/devices/pnp0/00:04/00:04:0/00:04:0.0/tty/ttyS0/";
    tree.write(used + "type", "4\n");
    tree.write(used + "port", "0x3F8\n");
    tree.write(used + "irq", "4\n");
    tree.write(used + "uartclk", "1843200\n");
    tree.write(used + "iomem_base", "0x0\n");
    tree.link(used + "device", "../../../00:04:0.0");
    tree.link("sys/devices/pnp0/00:04/00:04:0/00:04:0.0/driver",
              "../../../../../bus/serial-base/drivers/port");
    tree.link("sys/devices/pnp0/00:04/00:04:0/driver", "../../../../bus/serial-base/drivers/ctrl");
    tree.link("sys/devices/pnp0/00:04/driver", "../../../bus/pnp/drivers/serial");
    tree.link("sys/class/tty/ttyS0", "../../devices/pnp0/00:04/00:04:0/00:04:0.0/tty/ttyS0");
    tree.write("sys/class/tty/ttyS1/type", "0\n");
    tree.link("sys/class/tty/ttyS1/device", "../../../serial8250");
    tree.write("sys/class/tty/tty1/dev", "4:1\n");
    const GroupData data = gatheredBelow(kSerialPort, tree.path());
    ASSERT_EQ((std::vector<std::string>{"/dev/ttyS0"}), keysOf(data));
    expectAll(kSerialPort, data.instances().front(),
              {{"DeviceID", "/dev/ttyS0"},
               {"Name", "ttyS0"},
               {"MaxBaudRate", "115200"},
               {"UartType", "16550A"},
               {"IoAddress", "03f8"},
               {"Irq", "4"},
               {"Driver", "serial"}});
}

TEST(SerialPort, ReportsUsbAdaptersAndMemoryMappedPorts) {
    const ScratchDir tree;
    const std::string usb = "sys/devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.0/ttyUSB0/";
    tree.write(usb + "tty/ttyUSB0/dev", "188:0\n");
    tree.link(usb + "tty/ttyUSB0/device", "../../../ttyUSB0");
    tree.link(usb + "driver", "../../../../../../../bus/usb-serial/drivers/ftdi_sio");
    tree.link("sys/class/tty/ttyUSB0",
              "../../devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.0/ttyUSB0/tty/ttyUSB0");
    tree.write("sys/bus/usb/devices/1-4/product", "FT232R USB UART\n");
    tree.write("sys/class/tty/ttyAMA0/type", "32\n");
    tree.write("sys/class/tty/ttyAMA0/port", "0x0\n");
    tree.write("sys/class/tty/ttyAMA0/iomem_base", "0x9000000\n");
    tree.write("sys/class/tty/ttyAMA0/uartclk", "24000000\n");
    tree.link("sys/class/tty/ttyAMA0/device", "../../../9000000.pl011");
    const GroupData data = gatheredBelow(kSerialPort, tree.path());
    expectAll(kSerialPort, instanceOf(data, "/dev/ttyUSB0"),
              {{"DeviceID", "/dev/ttyUSB0"},
               {"Name", "FT232R USB UART"},
               {"BusAddress", "1-4"},
               {"Driver", "ftdi_sio"}});
    expectAll(kSerialPort, instanceOf(data, "/dev/ttyAMA0"),
              {{"DeviceID", "/dev/ttyAMA0"},
               {"Name", "ttyAMA0"},
               {"MaxBaudRate", "1500000"},
               {"UartType", "PL011"},
               {"IoAddress", "0000000009000000"}});
}

}  // namespace
}  // namespace toolkit::quorvah
