#include "toolkit/quorvah/sources/BusAddress.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(BusAddress, WellFormedAddressesAreRead) {
    const std::optional<PciAddress> address = readPciAddress("10000:e0:1f.7");
    ASSERT_TRUE(address.has_value());
    EXPECT_EQ(0x10000U, address->domain);
    EXPECT_EQ(0xe0U, address->bus);
    EXPECT_EQ(31U, address->device);
    EXPECT_EQ(7U, address->function);
}

TEST(BusAddress, OtherNamesAreRejected) {
    for (const char* const text :
         {"", "0000", "0000:00", "0000:00:1f", "000:00:1f.0", "0000:00:20.0", "0000:00:1f.8", "0000:00:1f.",
          "0000:0:1f.0", "0000:00:1f.00", "0000:00:1g.0", "pci0000:00", "123456789:00:1f.0",
          "0000:00:1f.0:pcie002", "-000:00:00.0"}) {
        EXPECT_FALSE(readPciAddress(text).has_value()) << text;
    }
}

TEST(BusAddress, TheInnermostDeviceOfAPathCounts) {
    EXPECT_EQ("0000:03:00.0", pciAddressIn("../../devices/pci0000:00/0000:00:1b.0/0000:03:00.0/net/eth0"));
    EXPECT_EQ("0000:00:03.0", pciAddressIn("../../devices/pci0000:00/0000:00:03.0/virtio2/net/eth0"));
    EXPECT_EQ("", pciAddressIn("../../devices/virtual/net/lo"));
    EXPECT_EQ("1-4.2",
              usbDeviceIn("../../devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4.2/1-4.2:1.0/net/eth1"));
    EXPECT_EQ("", usbDeviceIn("../../devices/virtual/net/br-1"));
    EXPECT_EQ("",
              usbDeviceIn("../../devices/pci0000:00/0000:00:0d.2/domain1/1-0/1-1/1-1.0/net/thunderbolt0"));
    EXPECT_EQ("", usbDeviceIn("../../../0-1.0"));
    EXPECT_EQ("", usbDeviceIn(""));
}

}  // namespace
}  // namespace toolkit::quorvah
