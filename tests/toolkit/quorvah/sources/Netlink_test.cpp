#include "toolkit/quorvah/sources/Netlink.h"

#include <gtest/gtest.h>
#include <linux/if_addr.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cstring>
#include <string>

namespace toolkit::quorvah {
namespace {

template <class Struct>
std::string bytesOf(const Struct& value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string padded(std::string bytes) {
    bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
    return bytes;
}

std::string attribute(unsigned short type, const std::string& value) {
    const rtattr header{static_cast<unsigned short>(sizeof(rtattr) + value.size()), type};
    return padded(bytesOf(header) + value);
}

std::string message(unsigned short type, const std::string& payload) {
    nlmsghdr header{};
    header.nlmsg_len = static_cast<unsigned>(sizeof header + payload.size());
    header.nlmsg_type = type;
    return padded(bytesOf(header) + payload);
}

std::string addressMessage(int family, unsigned char prefixLength, const std::string& attributes) {
    ifaddrmsg head{};
    head.ifa_family = static_cast<unsigned char>(family);
    head.ifa_prefixlen = prefixLength;
    head.ifa_flags = 0x80;
    head.ifa_scope = RT_SCOPE_LINK;
    head.ifa_index = 3;
    return message(RTM_NEWADDR, bytesOf(head) + attributes);
}

std::string routeMessage(unsigned char table, unsigned char type, unsigned char length,
                         const std::string& attributes) {
    rtmsg head{};
    head.rtm_family = AF_INET;
    head.rtm_table = table;
    head.rtm_type = type;
    head.rtm_dst_len = length;
    return message(RTM_NEWROUTE, bytesOf(head) + attributes);
}

const std::string kLocal("\x0a\x00\x00\x01", 4);
const std::string kFar("\x0a\x00\x00\x02", 4);

std::string firstBytes(const IpAddressBytes& bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), 4);
}

std::string fullAddress() {
    const ifa_cacheinfo life{100, 200, 0, 0};
    return addressMessage(AF_INET, 24,
                          attribute(IFA_LOCAL, kLocal) + attribute(IFA_ADDRESS, kFar) +
                              attribute(IFA_BROADCAST, std::string("\x0a\x00\x00\xff", 4)) +
                              attribute(IFA_LABEL, std::string("eth0:1\0", 7)) +
                              attribute(IFA_FLAGS, bytesOf(std::uint32_t{0x280})) +
                              attribute(IFA_CACHEINFO, bytesOf(life)) + attribute(IFA_PROTO, "\x02"));
}

TEST(Netlink, AnAddressMessageGivesItsFields) {
    NetlinkAnswer answer;
    EXPECT_EQ(NetlinkState::More, readNetlinkBlock(fullAddress(), answer));
    ASSERT_EQ(1U, answer.addresses.size());
    const NetlinkAddress& address = answer.addresses[0];
    EXPECT_EQ(AF_INET, address.family);
    EXPECT_EQ(3U, address.interface);
    EXPECT_EQ(24U, address.prefixLength);
    EXPECT_EQ(unsigned{RT_SCOPE_LINK}, address.scope);
    EXPECT_EQ(0x280U, address.flags);
    EXPECT_EQ(2U, address.protocol);
    EXPECT_TRUE(address.finite);
    EXPECT_EQ(kLocal, firstBytes(address.address));
    EXPECT_TRUE(address.hasPeer);
    EXPECT_EQ(kFar, firstBytes(address.peer));
    EXPECT_TRUE(address.hasBroadcast);
    EXPECT_EQ("eth0:1", address.label);
}

TEST(Netlink, WithoutAPeerBothAttributesNameTheAddress) {
    NetlinkAnswer answer;
    readNetlinkBlock(
        addressMessage(AF_INET, 24, attribute(IFA_LOCAL, kLocal) + attribute(IFA_ADDRESS, kLocal)), answer);
    readNetlinkBlock(addressMessage(AF_INET6, 64, attribute(IFA_ADDRESS, std::string(16, '\x01'))), answer);
    ASSERT_EQ(2U, answer.addresses.size());
    EXPECT_FALSE(answer.addresses[0].hasPeer);
    EXPECT_FALSE(answer.addresses[1].hasPeer);
    EXPECT_EQ(1, answer.addresses[1].address[15]);
    EXPECT_EQ(0x80U, answer.addresses[1].flags);
    EXPECT_FALSE(answer.addresses[1].finite);
}

TEST(Netlink, AnUnlimitedLifetimeIsNotFinite) {
    const ifa_cacheinfo life{~0U, ~0U, 0, 0};
    NetlinkAnswer answer;
    readNetlinkBlock(
        addressMessage(AF_INET, 8, attribute(IFA_LOCAL, kLocal) + attribute(IFA_CACHEINFO, bytesOf(life))),
        answer);
    ASSERT_EQ(1U, answer.addresses.size());
    EXPECT_FALSE(answer.addresses[0].finite);
}

TEST(Netlink, AMessageWithoutAddressIsSkipped) {
    NetlinkAnswer answer;
    readNetlinkBlock(addressMessage(AF_INET, 8, ""), answer);
    readNetlinkBlock(addressMessage(AF_INET, 8, attribute(IFA_LOCAL, "abc")), answer);
    EXPECT_TRUE(answer.addresses.empty());
}

TEST(Netlink, DefaultRoutesOfTheMainTableGiveTheirGateways) {
    const std::string ways = attribute(RTA_GATEWAY, kFar) + attribute(RTA_OIF, bytesOf(std::uint32_t{4})) +
                             attribute(RTA_PRIORITY, bytesOf(std::uint32_t{100}));
    NetlinkAnswer answer;
    readNetlinkBlock(
        routeMessage(RT_TABLE_MAIN, RTN_UNICAST, 0, ways) +
            routeMessage(RT_TABLE_MAIN, RTN_UNICAST, 24, ways) +
            routeMessage(RT_TABLE_LOCAL, RTN_UNICAST, 0, ways) +
            routeMessage(RT_TABLE_MAIN, RTN_BLACKHOLE, 0, ways) +
            routeMessage(RT_TABLE_MAIN, RTN_UNICAST, 0, attribute(RTA_OIF, bytesOf(std::uint32_t{5}))),
        answer);
    ASSERT_EQ(1U, answer.gateways.size());
    EXPECT_EQ(4U, answer.gateways[0].interface);
    EXPECT_EQ(100U, answer.gateways[0].metric);
    EXPECT_EQ(kFar, firstBytes(answer.gateways[0].gateway));
}

TEST(Netlink, ARouteWithSeveralNextHopsGivesEachGateway) {
    std::string hops;
    for (const int interface : {7, 9}) {
        const std::string gateway = attribute(RTA_GATEWAY, interface == 7 ? kLocal : kFar);
        rtnexthop hop{};
        hop.rtnh_len = static_cast<unsigned short>(sizeof hop + gateway.size());
        hop.rtnh_ifindex = interface;
        hops += bytesOf(hop) + gateway;
    }
    NetlinkAnswer answer;
    readNetlinkBlock(routeMessage(RT_TABLE_MAIN, RTN_UNICAST, 0, attribute(RTA_MULTIPATH, hops)), answer);
    ASSERT_EQ(2U, answer.gateways.size());
    EXPECT_EQ(7U, answer.gateways[0].interface);
    EXPECT_EQ(9U, answer.gateways[1].interface);
    EXPECT_EQ(kFar, firstBytes(answer.gateways[1].gateway));
}

TEST(Netlink, TheEndAndErrorsAreReported) {
    NetlinkAnswer answer;
    EXPECT_EQ(NetlinkState::Done, readNetlinkBlock(message(NLMSG_DONE, "1234"), answer));
    EXPECT_EQ(NetlinkState::Failed, readNetlinkBlock(message(NLMSG_ERROR, "1234"), answer));
    EXPECT_EQ(NetlinkState::Done, readNetlinkBlock(fullAddress() + message(NLMSG_DONE, "1234"), answer));
    EXPECT_EQ(1U, answer.addresses.size());
    EXPECT_EQ(NetlinkState::More, readNetlinkBlock("", answer));
}

TEST(Netlink, ATruncatedBlockGivesCompleteMessagesOnly) {
    const std::string block = fullAddress() + fullAddress() + message(NLMSG_DONE, "1234");
    for (std::size_t length = 0; length < block.size(); ++length) {
        NetlinkAnswer answer;
        EXPECT_EQ(NetlinkState::More, readNetlinkBlock(block.substr(0, length), answer)) << length;
        EXPECT_EQ(length / fullAddress().size(), answer.addresses.size()) << length;
    }
}

// Any length of a message or an attribute may be wrong.
TEST(Netlink, AnyByteMayBeWrong) {
    const std::string block =
        fullAddress() + routeMessage(RT_TABLE_MAIN, RTN_UNICAST, 0, attribute(RTA_GATEWAY, kFar));
    for (std::size_t i = 0; i < block.size(); ++i) {
        for (const char byte : {'\x00', '\x01', '\x7f', '\xff'}) {
            std::string broken = block;
            broken[i] = byte;
            NetlinkAnswer answer;
            readNetlinkBlock(broken, answer);
            EXPECT_LE(answer.addresses.size(), 1U);
            EXPECT_LE(answer.gateways.size(), 1U);
        }
    }
}

}  // namespace
}  // namespace toolkit::quorvah
