#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

const std::string kWorkstation = QUORVAH_TEST_TREES "/workstation";

TEST(NetworkAdapter, EveryFieldComesFromTheTree) {
    const Report report = gatheredBelow("NetworkAdapter", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"br0", "br0.100", "enp0s31f6", "eth1", "lo"}), keysOf(report));
    EXPECT_EQ(
        "enp0s31f6|Gigabit Adapter|Chip "
        "Maker|Ethernet|54:e1:ad:00:00:01|54:e1:ad:00:00:01|1000000000|true|Enabled|up|"
        "1500|e1000e|3.2.6-k||0000:00:1f.6|true|br0|",
        joined(instanceOf(report, "enp0s31f6")));
}

TEST(NetworkAdapter, AnAssignedAddressIsNotPermanentAndAnImpossibleSpeedUnknown) {
    const Report report = gatheredBelow("NetworkAdapter", kWorkstation);
    EXPECT_EQ(
        "eth1|Gigabit USB Adapter|Adapter "
        "Maker|Ethernet||02:00:00:00:00:07|||Disabled|down|1500|ax88179|||1-4|true||",
        joined(instanceOf(report, "eth1")));
}

TEST(NetworkAdapter, InterfacesWithoutHardwareSaySo) {
    const Report report = gatheredBelow("NetworkAdapter", kWorkstation);
    EXPECT_EQ("br0|||Bridge||54:e1:ad:00:00:01|||Enabled||1500|||||false||",
              joined(instanceOf(report, "br0")));
    EXPECT_EQ("br0.100|||VLAN||54:e1:ad:00:00:01|||Enabled||1500|||||false||",
              joined(instanceOf(report, "br0.100")));
    EXPECT_EQ("lo|||Loopback|||||Enabled||65536|||||false||", joined(instanceOf(report, "lo")));
}

TEST(NetworkAdapterLive, AdaptersAreThoseOfIpLink) {
    const Rows theirs = linesOf(
        "ip -j link | jq -r '.[] | [.ifname, (.mtu | tostring), "
        "(if .address == \"00:00:00:00:00:00\" then \"\" else .address // \"\" end), "
        "(if (.flags | index(\"UP\")) then \"Enabled\" else \"Disabled\" end), "
        "(.operstate | ascii_downcase | if . == \"unknown\" then \"\" else . end), .master // \"\"] | @tsv'");
    EXPECT_FALSE(theirs.empty());
    EXPECT_EQ(sorted(theirs), rowsOf(gatheredLive("NetworkAdapter"),
                                     {"DeviceID", "ActiveMaximumTransmissionUnit", "NetworkAddresses",
                                      "EnabledState", "OperationalStatus", "Master"}));
}

}  // namespace
}  // namespace toolkit::quorvah
