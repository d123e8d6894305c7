#include <gtest/gtest.h>

#include <map>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(IPAddress, AddressesComeFromTheRoutingTrie) {
    const GroupData data = gatheredTree(kIPAddress, "workstation");
    EXPECT_EQ((std::vector<std::string>{"127.0.0.1", "169.254.7.7", "192.0.2.10", "198.51.100.1"}),
              keysOf(data));
    expectAll(data.group(), instanceOf(data, "192.0.2.10"),
              {{"IPv4Address", "192.0.2.10"},
               {"Name", "br0"},
               {"SubnetMask", "255.255.255.0"},
               {"PrefixLength", "24"},
               {"BroadcastAddress", "192.0.2.255"},
               {"Gateway", "192.0.2.254"},
               {"MacAddress", "54:e1:ad:00:00:01"},
               {"NameServers", "192.0.2.53;2001:db8::53"}});
    expectAll(
        data.group(), instanceOf(data, "127.0.0.1"),
        {{"IPv4Address", "127.0.0.1"}, {"Name", "lo"}, {"SubnetMask", "255.0.0.0"}, {"PrefixLength", "8"}});
}

TEST(IPAddress, AnAmbiguousInterfaceIsNotNamed) {
    const GroupData data = gatheredTree(kIPAddress, "workstation");
    expectAll(data.group(), instanceOf(data, "169.254.7.7"),
              {{"IPv4Address", "169.254.7.7"},
               {"SubnetMask", "255.255.0.0"},
               {"PrefixLength", "16"},
               {"AddressOrigin", "LinkLocal"},
               {"BroadcastAddress", "169.254.255.255"},
               {"NameServers", "192.0.2.53;2001:db8::53"}});
    expectAll(data.group(), instanceOf(data, "198.51.100.1"),
              {{"IPv4Address", "198.51.100.1"}, {"NameServers", "192.0.2.53;2001:db8::53"}});
}

TEST(IPAddress, TheLoopbackOfATreeWithoutInterfacesIsTheOneWithItsIpv6Address) {
    const ScratchDir tree;
    tree.write("proc/net/fib_trie",
               "Main:\n"
               "     |-- 127.0.0.0\n        /8 host LOCAL\n"
               "     |-- 127.0.0.1\n        /32 host LOCAL\n"
               "     |-- 127.0.0.53\n        /32 host LOCAL\n"
               "     |-- 127.255.255.255\n        /32 link BROADCAST\n");
    const auto namesOf = [&tree] {
        std::vector<std::string> names;
        const GroupData data = gatheredBelow(kIPAddress, tree.path());
        for (const Instance& instance : data.instances()) names.emplace_back(instance.get("Name"));
        return names;
    };
    EXPECT_EQ((std::vector<std::string>{"", ""}), namesOf());
    tree.write("proc/net/if_inet6", "00000000000000000000000000000001 01 80 10 80      lo0\n");
    EXPECT_EQ((std::vector<std::string>{"lo0", "lo0"}), namesOf());
    tree.write("sys/class/net/eth0/type", "1\n");
    tree.write("sys/class/net/lo1/type", "772\n");
    EXPECT_EQ((std::vector<std::string>{"lo1", "lo1"}), namesOf());
}

TEST(IPAddressLive, AddressesMatchIp) {
    const Rows theirs = linesOf(
        "ip -j addr | jq -r '.[] | .ifname as $name | .addr_info[] | select(.family == \"inet\") | "
        "[.local, $name, (.prefixlen | tostring), .broadcast // \"\", .address // \"\", .scope, .label // "
        "\"\", if (.local | startswith(\"169.254.\")) then \"LinkLocal\" elif .dynamic then \"DHCP\" else "
        "\"Static\" end] | @tsv'");
    EXPECT_FALSE(theirs.empty());
    EXPECT_EQ(sorted(theirs),
              rowsOf(gatheredLive(kIPAddress), {"IPv4Address", "Name", "PrefixLength", "BroadcastAddress",
                                                "PeerAddress", "Scope", "Label", "AddressOrigin"}));
}

TEST(IPAddressLive, HardwareAddressesMatchIpLink) {
    std::map<std::string, std::string> addresses;
    for (const std::string& line : linesOf("ip -j link | jq -r '.[] | [.ifname, .address // \"\"] | @tsv'")) {
        const Rows fields = fieldsOf(line);
        if (fields[1].find_first_not_of("0:") != std::string::npos) addresses[fields[0]] = fields[1];
    }
    for (const Group* const group : {&kIPAddress, &kIPv6Address}) {
        const GroupData data = gatheredLive(*group);
        for (const Instance& address : data.instances())
            EXPECT_EQ(addresses[address.get("Name")], address.get("MacAddress")) << joined(address);
    }
}

TEST(IPAddressLive, GatewaysMatchIpRoute) {
    std::map<std::string, std::string> gateways;
    for (const std::string& line :
         linesOf("ip -j -4 route show default | jq -r 'sort_by(-(.metric // 0)) | .[] | "
                 "select(.gateway) | [.dev, .gateway] | @tsv'")) {
        const Rows fields = fieldsOf(line);
        gateways[fields[0]] = fields[1];  // the last one has the lowest metric
    }
    const GroupData data = gatheredLive(kIPAddress);
    EXPECT_FALSE(data.instances().empty());
    for (const Instance& address : data.instances()) {
        const bool linkLocal = address.get("AddressOrigin") == "LinkLocal";
        EXPECT_EQ(linkLocal ? "" : gateways[address.get("Name")], address.get("Gateway")) << joined(address);
    }
}

TEST(IPAddressLive, TheFilesOfTheKernelGiveTheSameAddresses) {
    const std::vector<std::string> fields = {"IPv4Address", "Name", "SubnetMask", "PrefixLength"};
    EXPECT_EQ(rowsOf(gatheredLive(kIPAddress), fields), rowsOf(gatheredBelow(kIPAddress, "/"), fields));
}

}  // namespace
}  // namespace toolkit::quorvah
