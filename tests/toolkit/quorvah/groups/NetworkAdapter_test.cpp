#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

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

}  // namespace
}  // namespace toolkit::quorvah
