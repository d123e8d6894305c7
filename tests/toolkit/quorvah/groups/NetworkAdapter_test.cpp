#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(NetworkAdapter, EveryFieldComesFromTheTree) {
    const GroupData data = gatheredTree(kNetworkAdapter, "workstation");
    EXPECT_EQ((std::vector<std::string>{"br0", "br0.100", "enp0s31f6", "eth1", "lo"}), keysOf(data));
    expectAll(data.group(), instanceOf(data, "enp0s31f6"),
              {{"DeviceID", "enp0s31f6"},
               {"Description", "Gigabit Adapter"},
               {"Manufacturer", "Chip Maker"},
               {"LinkTechnology", "Ethernet"},
               {"PermanentAddress", "54:e1:ad:00:00:01"},
               {"NetworkAddresses", "54:e1:ad:00:00:01"},
               {"Speed", "1000000000"},
               {"FullDuplex", "true"},
               {"EnabledState", "Enabled"},
               {"OperationalStatus", "up"},
               {"ActiveMaximumTransmissionUnit", "1500"},
               {"DriverName", "e1000e"},
               {"DriverVersion", "3.2.6-k"},
               {"BusAddress", "0000:00:1f.6"},
               {"Physical", "true"},
               {"Master", "br0"}});
}

TEST(NetworkAdapter, AnAssignedAddressIsNotPermanentAndAnImpossibleSpeedUnknown) {
    const GroupData data = gatheredTree(kNetworkAdapter, "workstation");
    expectAll(data.group(), instanceOf(data, "eth1"),
              {{"DeviceID", "eth1"},
               {"Description", "Gigabit USB Adapter"},
               {"Manufacturer", "Adapter Maker"},
               {"LinkTechnology", "Ethernet"},
               {"NetworkAddresses", "02:00:00:00:00:07"},
               {"EnabledState", "Disabled"},
               {"OperationalStatus", "down"},
               {"ActiveMaximumTransmissionUnit", "1500"},
               {"DriverName", "ax88179"},
               {"BusAddress", "1-4"},
               {"Physical", "true"}});
}

TEST(NetworkAdapter, InterfacesWithoutHardwareAreNotPhysical) {
    const GroupData data = gatheredTree(kNetworkAdapter, "workstation");
    expectAll(data.group(), instanceOf(data, "br0"),
              {{"DeviceID", "br0"},
               {"LinkTechnology", "Bridge"},
               {"NetworkAddresses", "54:e1:ad:00:00:01"},
               {"EnabledState", "Enabled"},
               {"ActiveMaximumTransmissionUnit", "1500"},
               {"Physical", "false"}});
    expectAll(data.group(), instanceOf(data, "br0.100"),
              {{"DeviceID", "br0.100"},
               {"LinkTechnology", "VLAN"},
               {"NetworkAddresses", "54:e1:ad:00:00:01"},
               {"EnabledState", "Enabled"},
               {"ActiveMaximumTransmissionUnit", "1500"},
               {"Physical", "false"}});
    expectAll(data.group(), instanceOf(data, "lo"),
              {{"DeviceID", "lo"},
               {"LinkTechnology", "Loopback"},
               {"EnabledState", "Enabled"},
               {"ActiveMaximumTransmissionUnit", "65536"},
               {"Physical", "false"}});
}

TEST(NetworkAdapter, AUsbAdapterIsDescribedByItsOwnTexts) {
    const ScratchDir tree;
    const std::string device = "sys/devices/pci0000:00/0000:00:14.0/usb1/1-4/";
    tree.write(device + "idVendor", "0b95\n");
    tree.write(device + "manufacturer", "Own Maker\n");
    tree.write(device + "product", "Own Adapter\n");
    tree.write(device + "1-4:1.0/net/eth0/type", "1\n");
    tree.link("sys/bus/usb/devices/1-4", "../../../devices/pci0000:00/0000:00:14.0/usb1/1-4");
    tree.link("sys/class/net/eth0", "../../devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.0/net/eth0");
    const GroupData data = gatheredBelow(kNetworkAdapter, tree.path());
    EXPECT_EQ(instanceOf(data, "eth0").get("Description"), "Own Adapter");
    EXPECT_EQ(instanceOf(data, "eth0").get("Manufacturer"), "Own Maker");
}

TEST(NetworkAdapter, ATunnelOfEthernetFramesIsATunnel) {
    const ScratchDir tree;
    tree.write("sys/class/net/gretap0/type", "1\n");
    tree.write("sys/class/net/gretap0/address", "00:00:00:00:00:00\n");
    tree.write("sys/class/net/gretap0/addr_assign_type", "0\n");
    const GroupData data = gatheredBelow(kNetworkAdapter, tree.path());
    expectAll(kNetworkAdapter, instanceOf(data, "gretap0"),
              {{"DeviceID", "gretap0"}, {"LinkTechnology", "Tunnel"}, {"Physical", "false"}});
}

TEST(NetworkAdapterLive, OnlyHardwareHasAPermanentAddressAndFirmware) {
    const GroupData data = gatheredLive(kNetworkAdapter);
    for (const Instance& adapter : data.instances()) {
        if (adapter.get("Physical") == "true") continue;
        EXPECT_EQ("", adapter.get("PermanentAddress") + adapter.get("FirmwareVersion")) << joined(adapter);
    }
}

TEST(NetworkAdapterLive, AdaptersMatchIpLink) {
    const Rows theirs = linesOf(
        "ip -j link | jq -r '.[] | [.ifname, (.mtu | tostring), "
        "(if .address == \"00:00:00:00:00:00\" then \"\" else .address // \"\" end), "
        "(if (.flags | index(\"UP\")) then \"Enabled\" else \"Disabled\" end), "
        "(.operstate | ascii_downcase | if . == \"unknown\" then \"\" else . end), .master // \"\"] | @tsv'");
    EXPECT_FALSE(theirs.empty());
    EXPECT_EQ(sorted(theirs), rowsOf(gatheredLive(kNetworkAdapter),
                                     {"DeviceID", "ActiveMaximumTransmissionUnit", "NetworkAddresses",
                                      "EnabledState", "OperationalStatus", "Master"}));
}

TEST(NetworkAdapter, AnAdapterOverThunderboltIsAtItsPciAddress) {
    const ScratchDir tree;
    const std::string service = "sys/devices/pci0000:00/0000:00:0d.2/domain0/0-0/0-1/0-1.0/";
    tree.write(service + "net/thunderbolt0/type", "1\n");
    tree.write(service + "net/thunderbolt0/operstate", "up\n");
    tree.link(service + "net/thunderbolt0/device", "../../../0-1.0");
    tree.link("sys/class/net/thunderbolt0", "../../../" + service + "net/thunderbolt0");
    const GroupData data = gatheredBelow(kNetworkAdapter, tree.path());
    EXPECT_EQ("0000:00:0d.2", instanceOf(data, "thunderbolt0").get("BusAddress"));
    EXPECT_EQ("Ethernet", instanceOf(data, "thunderbolt0").get("LinkTechnology"));
}

TEST(NetworkAdapter, OnlyStatesOfTheKernelAreReported) {
    const ScratchDir tree;
    tree.write("sys/class/net/eth0/operstate", "\xff\xfe\n");
    tree.write("sys/class/net/eth1/operstate", "lowerlayerdown\n");
    tree.write("sys/class/net/eth2/operstate", "unknown\n");
    const GroupData data = gatheredBelow(kNetworkAdapter, tree.path());
    EXPECT_EQ("", instanceOf(data, "eth0").get("OperationalStatus"));
    EXPECT_EQ("lowerlayerdown", instanceOf(data, "eth1").get("OperationalStatus"));
    EXPECT_EQ("", instanceOf(data, "eth2").get("OperationalStatus"));
}

}  // namespace
}  // namespace toolkit::quorvah
