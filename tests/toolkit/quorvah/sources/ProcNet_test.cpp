#include "toolkit/quorvah/sources/ProcNet.h"

#include <gtest/gtest.h>

#include <string>

#include "toolkit/quorvah/sources/IpAddressText.h"

namespace toolkit::quorvah {
namespace {

constexpr char kTrie[] =
    "Main:\n"
    "  +-- 0.0.0.0/0 3 0 5\n"
    "     |-- 0.0.0.0\n"
    "        /0 universe UNICAST\n"
    "     +-- 127.0.0.0/8 2 0 2\n"
    "        +-- 127.0.0.0/31 1 0 0\n"
    "           |-- 127.0.0.0\n"
    "              /8 host LOCAL\n"
    "           |-- 127.0.0.1\n"
    "              /32 host LOCAL\n"
    "        |-- 127.255.255.255\n"
    "           /32 link BROADCAST\n"
    "     +-- 192.0.2.0/24 2 0 2\n"
    "        +-- 192.0.2.0/30 2 0 2\n"
    "           |-- 192.0.2.0\n"
    "              /24 link UNICAST\n"
    "           |-- 192.0.2.2\n"
    "              /32 host LOCAL\n"
    "        |-- 192.0.2.255\n"
    "           /32 link BROADCAST\n"
    "     |-- 198.51.100.7\n"
    "        /32 host LOCAL\n"
    "Local:\n"
    "  |-- 127.0.0.1\n"
    "     /32 host LOCAL\n"
    "  |-- 192.0.2.2\n"
    "     /32 host LOCAL\n";

TEST(FibTrie, LocalAddressesAreListedOnceWithTheirNetwork) {
    const auto addresses = readFibTrie(kTrie);
    ASSERT_EQ(3U, addresses.size());
    EXPECT_EQ("127.0.0.1", ipv4Text(addresses[0].address));
    EXPECT_EQ(8, addresses[0].prefixLength);
    EXPECT_TRUE(addresses[0].loopback);
    EXPECT_FALSE(addresses[0].broadcastKnown);
    EXPECT_EQ("192.0.2.2", ipv4Text(addresses[1].address));
    EXPECT_FALSE(addresses[1].loopback);
    EXPECT_EQ(24, addresses[1].prefixLength);
    EXPECT_EQ("192.0.2.255", ipv4Text(addresses[1].broadcast));
}

TEST(FibTrie, AnAddressOutsideAllNetworksHasNoPrefixLength) {
    const auto addresses = readFibTrie(kTrie);
    ASSERT_EQ(3U, addresses.size());
    EXPECT_EQ("198.51.100.7", ipv4Text(addresses[2].address));
    EXPECT_EQ(-1, addresses[2].prefixLength);
    EXPECT_FALSE(addresses[2].broadcastKnown);
}

TEST(FibTrie, ARouteToHostsIsNotTheNetworkOfAnAddress) {
    const auto addresses = readFibTrie(
        "|-- 10.8.0.0\n /24 link UNICAST\n"
        "|-- 10.8.0.1\n /32 host LOCAL\n"
        "|-- 10.9.0.0\n /16 link UNICAST\n"
        "|-- 10.9.1.0\n /24 link UNICAST\n"
        "|-- 10.9.1.1\n /32 host LOCAL\n"
        "|-- 10.9.255.255\n /32 link BROADCAST\n"
        "|-- 10.10.0.0\n /31 link UNICAST\n /32 host LOCAL\n");
    ASSERT_EQ(3U, addresses.size());
    EXPECT_EQ(-1, addresses[0].prefixLength);
    EXPECT_EQ(16, addresses[1].prefixLength);
    EXPECT_EQ("10.9.255.255", ipv4Text(addresses[1].broadcast));
    EXPECT_EQ(31, addresses[2].prefixLength);
    EXPECT_FALSE(addresses[2].broadcastKnown);
}

TEST(FibTrie, MalformedLinesAreSkipped) {
    for (const char* const text :
         {"", "Main:\n", "/32 host LOCAL\n", "|-- 1.2.3\n /32 host LOCAL\n", "|-- 1.2.3.4\n /33 host LOCAL\n",
          "|-- 1.2.3.4\n /-1 host LOCAL\n", "|-- 1.2.3.4\n /32x host LOCAL\n",
          "|-- 1.2.3.4\n /32 link UNICAST\n", "|-- 1.2.3.4\n / host LOCAL\n", "|-- 1.2.3.4"}) {
        EXPECT_TRUE(readFibTrie(text).empty()) << text;
    }
}

TEST(FibTrie, ATruncatedFileGivesNoWrongAddresses) {
    const std::string text = kTrie;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        for (const FibTrieAddress& address : readFibTrie(text.substr(0, length))) {
            EXPECT_NE(std::string::npos, text.find("|-- " + ipv4Text(address.address) + "\n")) << length;
        }
    }
}

constexpr char kRouteHead[] =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";

TEST(Routes, ALittleEndianMachinesRoutesAreRead) {
    const auto routes = readRoutes(std::string(kRouteHead) +
                                   "eth0\t00000000\t010200C0\t0003\t0\t0\t100\t00000000\t0\t0\t0  \n"
                                   "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0  \n");
    ASSERT_EQ(2U, routes.size());
    EXPECT_EQ("eth0", routes[0].interface);
    EXPECT_EQ("192.0.2.1", ipv4Text(routes[0].gateway));
    EXPECT_EQ(100U, routes[0].metric);
    EXPECT_EQ(0U, routes[0].mask);
    EXPECT_EQ("192.0.2.0", ipv4Text(routes[1].destination));
    EXPECT_EQ("255.255.255.0", ipv4Text(routes[1].mask));
}

TEST(Routes, ABigEndianMachinesRoutesAreRecognizedByTheirMasks) {
    const auto routes = readRoutes(std::string(kRouteHead) +
                                   "eth0\t00000000\tC0000201\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"
                                   "eth0\tC0000200\t00000000\t0001\t0\t0\t0\tFFFFFF00\t0\t0\t0\n");
    ASSERT_EQ(2U, routes.size());
    EXPECT_EQ("192.0.2.1", ipv4Text(routes[0].gateway));
    EXPECT_EQ("192.0.2.0", ipv4Text(routes[1].destination));
}

TEST(Routes, DownAndRejectRoutesAndMalformedLinesAreSkipped) {
    for (const char* const line :
         {"eth0\t00000000\t010200C0\t0002\t0\t0\t0\t00000000\t0\t0\t0\n",
          "*\t00000000\t00000000\t0201\t0\t0\t0\t00000000\n",
          "eth0\t0000000G\t010200C0\t0003\t0\t0\t0\t00000000\n", "eth0\t00000000\t010200C0\t0003\t0\t0\t0\n",
          "eth0\t100000000\t010200C0\t0003\t0\t0\t0\t00000000\n", "eth0\n", "\n", kRouteHead}) {
        EXPECT_TRUE(readRoutes(line).empty()) << line;
    }
}

TEST(IfInet6, AddressesAreRead) {
    const auto addresses = readIfInet6(
        "fe8000000000000000fc00fffe000001 04 40 20 80     eth0\n"
        "00000000000000000000000000000001 01 80 10 80       lo");
    ASSERT_EQ(2U, addresses.size());
    EXPECT_EQ("fe80::fc:ff:fe00:1", ipv6Text(addresses[0].address));
    EXPECT_EQ(64U, addresses[0].prefixLength);
    EXPECT_EQ(0x20U, addresses[0].scope);
    EXPECT_EQ(0x80U, addresses[0].flags);
    EXPECT_EQ("eth0", addresses[0].interface);
    EXPECT_EQ("::1", ipv6Text(addresses[1].address));
    EXPECT_EQ(128U, addresses[1].prefixLength);
}

TEST(IfInet6, MalformedLinesAreSkipped) {
    for (const char* const line :
         {"", "fe8000000000000000fc00fffe00000 04 40 20 80 eth0\n",
          "fe8000000000000000fc00fffe00000g 04 40 20 80 eth0\n",
          "fe8000000000000000fc00fffe000001 04 81 20 80 eth0\n",
          "fe8000000000000000fc00fffe000001 04 40 20 80\n", "fe80::1 04 40 20 80 eth0\n"}) {
        EXPECT_TRUE(readIfInet6(line).empty()) << line;
    }
}

TEST(Ipv6Routes, OnlyDefaultRoutesWithGatewayAreRead) {
    const std::string zeros(32, '0');
    const std::string end = " 00000400 00000002 00000000 ";
    const auto routes = readIpv6DefaultRoutes(
        zeros + " 00 " + zeros + " 00 fd000000000000000000000000000001" + end + "00000003     eth0\n" +
        "fd000000000000000000000000000000 40 " + zeros + " 00 " + zeros + end + "00000001     eth0\n" +
        zeros + " 00 " + zeros + " 00 " + zeros + end + "00200200       lo\n" + zeros + " 00 " + zeros +
        " 00 fd00000000000000000000000000000" + end + "00000003     eth1\n" + zeros + " 00 " + zeros +
        " 00 fd000000000000000000000000000002" + end + "00000003");
    ASSERT_EQ(1U, routes.size());
    EXPECT_EQ("eth0", routes[0].interface);
    EXPECT_EQ("fd00::1", ipv6Text(routes[0].gateway));
    EXPECT_EQ(0x400U, routes[0].metric);
}

TEST(IpAddressText, ConvertsBetweenMasksAndPrefixLengths) {
    for (int length = 0; length <= 32; ++length) EXPECT_EQ(length, prefixLengthOf(maskOf(length)));
    EXPECT_EQ("255.255.254.0", ipv4Text(maskOf(23)));
    EXPECT_EQ(-1, prefixLengthOf(0x00FFFFFF));
    EXPECT_EQ(-1, prefixLengthOf(0xFFFFFF01));
}

TEST(IpAddressText, OtherTextsDoNotChangeTheTarget) {
    std::uint32_t address = 7;
    for (const char* const text : {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "a.b.c.d", "1.2.3.4 "}) {
        EXPECT_FALSE(readIpv4(text, address)) << text;
    }
    EXPECT_EQ(7U, address);
    ASSERT_TRUE(readIpv4("10.0.0.1", address));
    EXPECT_EQ(0x0A000001U, address);
}

}  // namespace
}  // namespace toolkit::quorvah
