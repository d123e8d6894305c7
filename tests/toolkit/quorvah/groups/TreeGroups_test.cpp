// Devices, adapters, addresses and drives of a captured tree.
#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

const std::string kWorkstation = QUORVAH_TEST_TREES "/workstation";

TEST(PCIDeviceTree, EveryFieldComesFromTheTree) {
    const Report report = gatheredBelow("PCIDevice", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"0000:00:02.1", "0000:00:14.0", "0000:00:1f.6", "0000:03:00.0",
                                        "10000:e0:06.0"}),
              keysOf(report));
    EXPECT_EQ(
        "0000:00:1f.6|Gigabit Adapter|Chip Maker|0|31|6|15bc|8086|2292|17aa|10|020000|Ethernet "
        "controller||e1000e||14|"
        "||||||"
        "|",
        joined(instanceOf(report, "0000:00:1f.6")));
    EXPECT_EQ(
        "0000:03:00.0|Fast SSD|Disk Maker|3|0|0|a808|144d|a801|144d|00|010802|Non-Volatile memory "
        "controller|Fast SSD "
        "Plus|nvme|0||8.0 GT/s PCIe|16.0 GT/s PCIe|4|4|7||true|",
        joined(instanceOf(report, "0000:03:00.0")));
}

TEST(PCIDeviceTree, WhatTheKernelCannotAskTheLinkIsUnknown) {
    const Report report = gatheredBelow("PCIDevice", kWorkstation);
    EXPECT_EQ(
        "0000:00:14.0|USB Host Controller|Chip Maker|0|20|0|a36d|8086|a36d|8086||0c0330|USB controller|USB "
        "Host "
        "Controller|||||||||"
        "|false|",
        joined(instanceOf(report, "0000:00:14.0")));
}

TEST(PCIDeviceTree, TheRevisionOfAnOldTreeComesFromTheConfigurationSpace) {
    const Report report = gatheredBelow("PCIDevice", kWorkstation);
    EXPECT_EQ("10000:e0:06.0||Chip Maker|224|6|0|1234|8086|||ab|060400|Bridge||||||||||||",
              joined(instanceOf(report, "10000:e0:06.0")));
}

TEST(PCIDeviceTree, AVirtualFunctionNamesItsParent) {
    const Report report = gatheredBelow("PCIDevice", kWorkstation);
    EXPECT_EQ("0000:00:1f.6", instanceOf(report, "0000:00:02.1").get("SriovParent"));
}

TEST(USBDeviceTree, TheDevicesOwnWordsComeBeforeTheDatabase) {
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

TEST(USBDeviceTree, EqualInterfacesAndPlaceholdersLeaveNoTrace) {
    const Report report = gatheredBelow("USBDevice", kWorkstation);
    EXPECT_EQ("1-4|Gigabit USB Adapter|Adapter Maker|||||||0b95|1790||||ax88179|ffff00||",
              joined(instanceOf(report, "1-4")));
}

TEST(NetworkAdapterTree, EveryFieldComesFromTheTree) {
    const Report report = gatheredBelow("NetworkAdapter", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"br0", "br0.100", "enp0s31f6", "eth1", "lo"}), keysOf(report));
    EXPECT_EQ(
        "enp0s31f6|Gigabit Adapter|Chip "
        "Maker|Ethernet|54:e1:ad:00:00:01|54:e1:ad:00:00:01|1000000000|true|Enabled|up|"
        "1500|e1000e|3.2.6-k||0000:00:1f.6|true|br0|",
        joined(instanceOf(report, "enp0s31f6")));
}

TEST(NetworkAdapterTree, AnAssignedAddressIsNotPermanentAndAnImpossibleSpeedUnknown) {
    const Report report = gatheredBelow("NetworkAdapter", kWorkstation);
    EXPECT_EQ(
        "eth1|Gigabit USB Adapter|Adapter "
        "Maker|Ethernet||02:00:00:00:00:07|||Disabled|down|1500|ax88179|||1-4|true||",
        joined(instanceOf(report, "eth1")));
}

TEST(NetworkAdapterTree, InterfacesWithoutHardwareSaySo) {
    const Report report = gatheredBelow("NetworkAdapter", kWorkstation);
    EXPECT_EQ("br0|||Bridge||54:e1:ad:00:00:01|||Enabled||1500|||||false||",
              joined(instanceOf(report, "br0")));
    EXPECT_EQ("br0.100|||VLAN||54:e1:ad:00:00:01|||Enabled||1500|||||false||",
              joined(instanceOf(report, "br0.100")));
    EXPECT_EQ("lo|||Loopback|||||Enabled||65536|||||false||", joined(instanceOf(report, "lo")));
}

TEST(IPAddressTree, AddressesComeFromTheRoutingTrie) {
    const Report report = gatheredBelow("IPAddress", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"127.0.0.1", "169.254.7.7", "192.0.2.10", "198.51.100.1"}),
              keysOf(report));
    EXPECT_EQ(
        "192.0.2.10|br0|255.255.255.0|24||192.0.2.255||||192.0.2.254|54:e1:ad:00:00:01|192.0.2.53;2001:db8::"
        "53|",
        joined(instanceOf(report, "192.0.2.10")));
    EXPECT_EQ("127.0.0.1||255.0.0.0|8||127.255.255.255|||||||", joined(instanceOf(report, "127.0.0.1")));
}

TEST(IPAddressTree, AnAmbiguousInterfaceIsNotNamed) {
    const Report report = gatheredBelow("IPAddress", kWorkstation);
    EXPECT_EQ("169.254.7.7||255.255.0.0|16|LinkLocal|||||||192.0.2.53;2001:db8::53|",
              joined(instanceOf(report, "169.254.7.7")));
    EXPECT_EQ("198.51.100.1|||||||||||192.0.2.53;2001:db8::53|", joined(instanceOf(report, "198.51.100.1")));
}

TEST(IPv6AddressTree, TheFlagsTellTheOrigin) {
    const Report report = gatheredBelow("IPv6Address", kWorkstation);
    const char* const kEnd = "fe80::1|54:e1:ad:00:00:01|";
    const struct {
        const char* key;
        const char* rest;
    } kCases[] = {
        {"2001:db8::10", "br0|64|SLAAC|Global Unicast|global|false|false|false|"},
        {"2001:db8::dad", "br0|128|DHCPv6|Global Unicast|global|false|false|false|"},
        {"2001:db8::1234:5678:abcd:ef01", "br0|64|SLAAC|Global Unicast|global|true|true|false|"},
        {"2001:db8::99", "br0|64|Static|Global Unicast|global|false|false|true|"},
        {"fe80::56e1:adff:fe00:1", "br0|64|LinkLocal|Link Local Unicast|link|false|false|false|"},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(std::string(test.key) + "|" + test.rest + kEnd, joined(instanceOf(report, test.key)));
    }
    EXPECT_EQ("::1|lo|128|Static|Loopback|host|false|false|false|||", joined(instanceOf(report, "::1")));
    EXPECT_EQ(6U, report.instances().size());
}

TEST(LogicalDriveTree, PseudoFileSystemsAndSecondMountsAreLeftOut) {
    const Report report = gatheredBelow("LogicalDrive", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"/", "/media/my disk", "/merged", "/net", "/ntfs", "/sshfs", "/twice",
                                        "/zip"}),
              keysOf(report));
    EXPECT_EQ("/dev/sdc2", instanceOf(report, "/twice").get("Name"));
}

TEST(LogicalDriveTree, EveryFieldComesFromTheTree) {
    const Report report = gatheredBelow("LogicalDrive", kWorkstation);
    EXPECT_EQ(
        "/|/dev/nvme0n1p2|ext4|512000|||false||rw,relatime,errors=remount-ro|root "
        "fs|11111111-2222-3333-4444-555555555555|||false|",
        joined(instanceOf(report, "/")));
    EXPECT_EQ("/media/my disk|/dev/sda1|xfs||||true||ro,nosuid|||||false|",
              joined(instanceOf(report, "/media/my disk")));
    EXPECT_EQ("/ntfs|/dev/sdb1|fuseblk|1048576|||false||rw|||||false|", joined(instanceOf(report, "/ntfs")));
    EXPECT_EQ("/merged|overlay|overlay||||false||rw,lowerdir=/a|||||false|",
              joined(instanceOf(report, "/merged")));
}

TEST(LogicalDriveTree, RemoteFileSystemsHaveNoSizesAndTheirPasswordsAreCut) {
    const Report report = gatheredBelow("LogicalDrive", kWorkstation);
    EXPECT_EQ("/net|server:/export|nfs4||||false||rw,vers=4.2,password=,addr=192.0.2.9|||||true|",
              joined(instanceOf(report, "/net")));
    EXPECT_EQ("true", instanceOf(report, "/sshfs").get("Remote"));
    EXPECT_EQ("", instanceOf(report, "/zip").get("Remote"));
}

TEST(LogicalDriveTree, AnImageHasItsDrivesInFstab) {
    const Tree tree;
    tree.put(
        "etc/fstab",
        "UUID=2222 / ext4 ro,errors=remount-ro 0 1\nLABEL=my\\040data /srv ext4 defaults\nproc /proc proc\n");
    const Report report = gatheredBelow("LogicalDrive", tree.path());
    ASSERT_EQ(2U, report.instances().size());
    EXPECT_EQ("/|UUID=2222|ext4||||true||ro,errors=remount-ro||2222|||false|",
              joined(instanceOf(report, "/")));
    EXPECT_EQ("my data", instanceOf(report, "/srv").get("Label"));
}

// Whatever the machine that the test runs on has, none of it may show.
TEST(EmptyTree, GivesNoInstances) {
    const Tree tree;
    for (const char* const group : {"SoftwarePackages", "PCIDevice", "USBDevice", "NetworkAdapter",
                                    "IPAddress", "IPv6Address", "LogicalDrive"}) {
        const Report report = gatheredBelow(group, tree.path());
        EXPECT_TRUE(report.instances().empty()) << group;
        EXPECT_LE(report.state(), GroupState::NotApplicable) << group << " " << report.reason();
    }
}

// Devices that are named like those of the scanning machine, about which the tree says nothing.
TEST(BareTree, FillsNoFieldFromTheScanningMachine) {
    const Tree tree;
    // The kernel has the loopback everywhere; an address stands for PCI devices where there are none.
    std::vector<std::string> names = {"lo", "0000:00:00.0"};
    for (const char* const folder : {"/sys/class/net", "/sys/bus/pci/devices", "/sys/bus/usb/devices"}) {
        for (std::string& name : Root().list(folder)) names.push_back(std::move(name));
    }
    for (const std::string& name : names) {
        if (name.find(':') != std::string::npos && name.find('-') != std::string::npos) continue;
        std::filesystem::create_directories(tree.path() + "/sys/class/net/" + name);
        std::filesystem::create_directories(tree.path() + "/sys/bus/pci/devices/" + name);
        std::filesystem::create_directories(tree.path() + "/sys/bus/usb/devices/" + name);
    }
    const Report adapters = gatheredBelow("NetworkAdapter", tree.path());
    EXPECT_FALSE(adapters.instances().empty());
    for (const Instance& adapter : adapters.instances()) {
        EXPECT_EQ(std::string(adapter.values().front()) + "|||||||||||||||false||", joined(adapter));
    }
    const Report pci = gatheredBelow("PCIDevice", tree.path());
    EXPECT_FALSE(pci.instances().empty());
    for (const Instance& device : pci.instances()) {
        for (std::size_t i = 6; i < device.values().size(); ++i) EXPECT_EQ("", device.values()[i]) << i;
    }
    const Report usb = gatheredBelow("USBDevice", tree.path());
    EXPECT_FALSE(usb.instances().empty());
    for (const Instance& device : usb.instances()) {
        for (std::size_t i = 1; i < device.values().size(); ++i) EXPECT_EQ("", device.values()[i]) << i;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
