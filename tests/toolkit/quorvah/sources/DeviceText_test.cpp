// Small texts of sysfs and udev.
#include <gtest/gtest.h>

#include "toolkit/quorvah/sources/FileSystemKind.h"
#include "toolkit/quorvah/sources/LinkTechnology.h"
#include "toolkit/quorvah/sources/PciAddress.h"
#include "toolkit/quorvah/sources/UdevData.h"
#include "toolkit/quorvah/sources/UsbText.h"

namespace toolkit::quorvah {
namespace {

TEST(PciAddress, WellFormedAddressesAreRead) {
    const std::optional<PciAddress> address = readPciAddress("10000:e0:1f.7");
    ASSERT_TRUE(address.has_value());
    EXPECT_EQ(0x10000U, address->domain);
    EXPECT_EQ(0xe0U, address->bus);
    EXPECT_EQ(31U, address->device);
    EXPECT_EQ(7U, address->function);
}

TEST(PciAddress, OtherNamesAreRefused) {
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
    EXPECT_EQ("", usbDeviceIn(""));
}

TEST(UsbText, ReleasesAreDecoded) {
    const struct {
        const char* bcd;
        const char* release;
    } kCases[] = {{"0516", "5.16"}, {"7200", "72.00"}, {"0001", "0.01"}, {"100a", "10.0a"},
                  {"", ""},         {"516", ""},       {"05160", ""},    {"05 6", ""}};
    for (const auto& test : kCases) EXPECT_EQ(test.release, usbRelease(test.bcd)) << test.bcd;
}

TEST(UsbText, SpeedsBecomeBitsPerSecond) {
    const struct {
        const char* megabits;
        const char* speed;
    } kCases[] = {
        {"1.5", "1500000"}, {"12", "12000000"}, {"480", "480000000"}, {"20000", "20000000000"}, {"", ""},
        {"unknown", ""},    {"0", ""},          {"-1", ""},           {"4294967295", ""},       {"1.5.", ""}};
    for (const auto& test : kCases) EXPECT_EQ(test.speed, usbSpeed(test.megabits)) << test.megabits;
}

TEST(UsbText, PowersLoseTheirUnit) {
    EXPECT_EQ("100", usbPower("100mA"));
    EXPECT_EQ("0", usbPower("0mA"));
    for (const char* const text : {"", "mA", "100", "100 mA", "-1mA", "1W"})
        EXPECT_EQ("", usbPower(text)) << text;
}

TEST(LinkTechnology, TheKindIsToldByWhatSysfsHas) {
    const struct {
        LinkTraits traits;
        const char* technology;
    } kCases[] = {
        {{1, "", true, false, false, false, false}, "Ethernet"},
        {{1, "", false, false, false, false, false}, "Virtual"},
        {{1, "wlan", true, false, false, false, false}, "WirelessLAN"},
        {{1, "", true, true, false, false, false}, "WirelessLAN"},
        {{1, "bridge", false, false, true, false, false}, "Bridge"},
        {{1, "", false, false, false, true, false}, "Bond"},
        {{1, "vlan", false, false, false, false, false}, "VLAN"},
        {{1, "vxlan", false, false, false, false, false}, "Tunnel"},
        {{1, "", false, false, false, false, true}, "Tunnel"},
        {{776, "", false, false, false, false, false}, "Tunnel"},
        {{65534, "", false, false, false, false, false}, "Tunnel"},
        {{772, "", false, false, false, false, false}, "Loopback"},
        {{32, "", true, false, false, false, false}, "InfiniBand"},
        {{280, "", false, false, false, false, false}, "Virtual"},
        {{280, "", true, false, false, false, false}, ""},
        {{-1, "", false, false, false, false, false}, ""},
        {{-1, "", true, false, false, false, false}, ""},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(test.technology, linkTechnology(test.traits))
            << test.traits.type << " " << test.traits.devType;
    }
}

TEST(UdevData, PropertiesAreFoundByTheirWholeName) {
    constexpr char kText[] =
        "S:disk/by-id/x\nE:ID_FS_UUID_ENC=enc\nE:ID_FS_UUID=1=2\nG:ID_FS_LABEL=no\nE:ID_FS_TYPE=ext4";
    EXPECT_EQ("1=2", udevProperty(kText, "ID_FS_UUID"));
    EXPECT_EQ("enc", udevProperty(kText, "ID_FS_UUID_ENC"));
    EXPECT_EQ("ext4", udevProperty(kText, "ID_FS_TYPE"));
    EXPECT_EQ("", udevProperty(kText, "ID_FS_LABEL"));
    EXPECT_EQ("", udevProperty(kText, ""));
    EXPECT_EQ("", udevProperty("", "ID_FS_UUID"));
}

TEST(UdevData, OnlyWholeHexEscapesAreResolved) {
    EXPECT_EQ("a b", withoutHexEscapes("a\\x20b"));
    EXPECT_EQ("\xc3\xa4", withoutHexEscapes("\\xc3\\xa4"));
    for (const char* const text : {"", "\\", "\\x", "\\x2", "\\xg0", "\\x2g", "x20"}) {
        EXPECT_EQ(text, withoutHexEscapes(text));
    }
}

Mount mountOf(const char* type, const char* mountPoint = "/x") {
    Mount mount;
    mount.type = type;
    mount.mountPoint = mountPoint;
    return mount;
}

TEST(FileSystemKind, TypesAreToldApart) {
    const struct {
        const char* type;
        FileSystemKind kind;
    } kCases[] = {
        {"ext4", FileSystemKind::Local},         {"overlay", FileSystemKind::Local},
        {"squashfs", FileSystemKind::Local},     {"some-new-fs", FileSystemKind::Local},
        {"proc", FileSystemKind::Pseudo},        {"autofs", FileSystemKind::Pseudo},
        {"tmpfs", FileSystemKind::Pseudo},       {"fuse.lxcfs", FileSystemKind::Pseudo},
        {"nfs4", FileSystemKind::Remote},        {"cifs", FileSystemKind::Remote},
        {"fuse.sshfs", FileSystemKind::Remote},  {"9p", FileSystemKind::Remote},
        {"fuse", FileSystemKind::Fuse},          {"fuseblk", FileSystemKind::Fuse},
        {"fuse.anything", FileSystemKind::Fuse},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.kind, fileSystemKind(mountOf(test.type))) << test.type;
}

TEST(FileSystemKind, ASystemThatRunsFromMemoryHasItsRootThere) {
    EXPECT_EQ(FileSystemKind::Local, fileSystemKind(mountOf("tmpfs", "/")));
    EXPECT_EQ(FileSystemKind::Local, fileSystemKind(mountOf("ramfs", "/")));
    EXPECT_EQ(FileSystemKind::Pseudo, fileSystemKind(mountOf("proc", "/")));
}

TEST(MountOptions, PasswordsAreCutOut) {
    const struct {
        const char* options;
        const char* kept;
    } kCases[] = {
        {"rw,password=x,user=me", "rw,password=,user=me"},
        {"pass=a=b", "pass="},
        {"passwd=", "passwd="},
        {"secret=k,secretfile=/f", "secret=,secretfile=/f"},
        {"password", "password"},
        {"", ""},
        {"rw", "rw"},
        {"pwd=x", "pwd="},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.kept, withoutPasswords(test.options)) << test.options;
}

}  // namespace
}  // namespace toolkit::quorvah
