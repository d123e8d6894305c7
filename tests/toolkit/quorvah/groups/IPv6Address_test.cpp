#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

const std::string kWorkstation = QUORVAH_TEST_TREES "/workstation";

TEST(IPv6Address, TheFlagsTellTheOrigin) {
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

TEST(IPv6AddressLive, AddressesAreThoseOfIp) {
    const Rows theirs = linesOf(
        "ip -j addr | jq -r '.[] | .ifname as $name | .addr_info[] | select(.family == \"inet6\") | "
        "[.local, $name, (.prefixlen | tostring), .scope, (.temporary // false | tostring), "
        "(.deprecated // false | tostring), (.tentative // false | tostring)] | @tsv'");
    EXPECT_EQ(sorted(theirs),
              rowsOf(gatheredLive("IPv6Address"), {"IPv6Address", "Name", "PrefixLength", "Scope",
                                                   "Temporary", "Deprecated", "Tentative"}));
}

TEST(IPv6AddressLive, TheFilesOfTheKernelGiveTheSameAddresses) {
    const Rows live =
        rowsOf(gatheredLive("IPv6Address"), {"IPv6Address", "Name", "PrefixLength", "AddressOrigin",
                                             "IPv6AddressType", "Scope", "Gateway", "MacAddress"});
    EXPECT_EQ(live, rowsOf(gatheredBelow("IPv6Address", "/"),
                           {"IPv6Address", "Name", "PrefixLength", "AddressOrigin", "IPv6AddressType",
                            "Scope", "Gateway", "MacAddress"}));
}

}  // namespace
}  // namespace toolkit::quorvah
