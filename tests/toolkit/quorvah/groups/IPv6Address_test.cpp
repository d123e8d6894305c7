#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(IPv6Address, TheOriginFollowsFromTheFlags) {
    const GroupData data = gatheredTree(kIPv6Address, "workstation");
    const Values cases[] = {
        {{"IPv6Address", "2001:db8::10"},
         {"PrefixLength", "64"},
         {"AddressOrigin", "SLAAC"},
         {"IPv6AddressType", "Global Unicast"},
         {"Scope", "global"},
         {"Temporary", "false"},
         {"Deprecated", "false"},
         {"Tentative", "false"}},
        {{"IPv6Address", "2001:db8::dad"},
         {"PrefixLength", "128"},
         {"AddressOrigin", "DHCPv6"},
         {"IPv6AddressType", "Global Unicast"},
         {"Scope", "global"},
         {"Temporary", "false"},
         {"Deprecated", "false"},
         {"Tentative", "false"}},
        {{"IPv6Address", "2001:db8::1234:5678:abcd:ef01"},
         {"PrefixLength", "64"},
         {"AddressOrigin", "SLAAC"},
         {"IPv6AddressType", "Global Unicast"},
         {"Scope", "global"},
         {"Temporary", "true"},
         {"Deprecated", "true"},
         {"Tentative", "false"}},
        {{"IPv6Address", "2001:db8::99"},
         {"PrefixLength", "64"},
         {"AddressOrigin", "Static"},
         {"IPv6AddressType", "Global Unicast"},
         {"Scope", "global"},
         {"Temporary", "false"},
         {"Deprecated", "false"},
         {"Tentative", "true"}},
        {{"IPv6Address", "fe80::56e1:adff:fe00:1"},
         {"PrefixLength", "64"},
         {"AddressOrigin", "LinkLocal"},
         {"IPv6AddressType", "Link Local Unicast"},
         {"Scope", "link"},
         {"Temporary", "false"},
         {"Deprecated", "false"},
         {"Tentative", "false"}},
    };
    for (Values expected : cases) {
        const std::string key = expected.front().second;
        for (const auto& field : Values{{"Name", "br0"}, {"MacAddress", "54:e1:ad:00:00:01"}})
            expected.push_back(field);
        // A gateway is not reached from a link-local address.
        if (!key.starts_with("fe80")) expected.push_back({"Gateway", "fe80::1"});
        expectAll(data.group(), instanceOf(data, key), expected);
    }
    expectAll(data.group(), instanceOf(data, "::1"),
              {{"IPv6Address", "::1"},
               {"Name", "lo"},
               {"PrefixLength", "128"},
               {"AddressOrigin", "Static"},
               {"IPv6AddressType", "Loopback"},
               {"Scope", "host"},
               {"Temporary", "false"},
               {"Deprecated", "false"},
               {"Tentative", "false"}});
    EXPECT_EQ(6U, data.instances().size());
}

TEST(IPv6AddressLive, AddressesMatchIp) {
    const Rows theirs = linesOf(
        "ip -j addr | jq -r '.[] | .ifname as $name | .addr_info[] | select(.family == \"inet6\") | "
        "[.local, $name, (.prefixlen | tostring), .scope, (.temporary // false | tostring), "
        "(.deprecated // false | tostring), (.tentative // false | tostring)] | @tsv'");
    EXPECT_EQ(sorted(theirs),
              rowsOf(gatheredLive(kIPv6Address), {"IPv6Address", "Name", "PrefixLength", "Scope", "Temporary",
                                                  "Deprecated", "Tentative"}));
}

TEST(IPv6AddressLive, GatewaysMatchIpRoute) {
    std::map<std::string, std::string> gateways;
    for (const std::string& line :
         linesOf("ip -j -6 route show default | jq -r 'sort_by(-(.metric // 0)) | .[] | "
                 "select(.gateway) | [.dev, .gateway] | @tsv'")) {
        const Rows fields = fieldsOf(line);
        gateways[fields[0]] = fields[1];  // the last one has the lowest metric
    }
    const GroupData data = gatheredLive(kIPv6Address);
    for (const Instance& address : data.instances()) {
        const bool linkLocal = address.get("AddressOrigin") == "LinkLocal";
        EXPECT_EQ(linkLocal ? "" : gateways[address.get("Name")], address.get("Gateway")) << joined(address);
    }
}

TEST(IPv6AddressLive, TheFilesOfTheKernelGiveTheSameAddresses) {
    const Rows live =
        rowsOf(gatheredLive(kIPv6Address), {"IPv6Address", "Name", "PrefixLength", "AddressOrigin",
                                            "IPv6AddressType", "Scope", "Gateway", "MacAddress"});
    EXPECT_EQ(live, rowsOf(gatheredBelow(kIPv6Address, "/"),
                           {"IPv6Address", "Name", "PrefixLength", "AddressOrigin", "IPv6AddressType",
                            "Scope", "Gateway", "MacAddress"}));
}

}  // namespace
}  // namespace toolkit::quorvah
