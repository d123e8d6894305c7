// The files of /proc/net with addresses and routes, for trees, where the kernel cannot be asked.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/sources/IpAddressText.h"

namespace toolkit::quorvah {

// An IPv4 address in host byte order.
using Ipv4 = std::uint32_t;

// An address of the system in fib_trie.
struct FibTrieAddress {
    Ipv4 address = 0;
    int prefixLength = -1;  // of the smallest network that contains it; -1 if unknown
    bool loopback = false;  // whether it belongs to the loopback interface
    bool broadcastKnown = false;
    Ipv4 broadcast = 0;
};

// Each local address once, in the order of the file.
std::vector<FibTrieAddress> readFibTrie(std::string_view text);

// A line of /proc/net/route.
struct Ipv4Route {
    std::string interface;
    Ipv4 destination = 0;
    Ipv4 gateway = 0;  // 0 for a directly connected network
    Ipv4 mask = 0;
    std::uint32_t metric = 0;
};

std::vector<Ipv4Route> readRoutes(std::string_view text);

// A line of /proc/net/if_inet6.
struct Inet6Address {
    IpAddressBytes address{};
    unsigned prefixLength = 0;
    unsigned scope = 0;  // 00 global, 10 host, 20 link, 40 site
    unsigned flags = 0;  // IFA_F_...
    std::string interface;
};

std::vector<Inet6Address> readIfInet6(std::string_view text);

// The default routes of /proc/net/ipv6_route.
struct Ipv6DefaultRoute {
    std::string interface;
    IpAddressBytes gateway{};
    std::uint32_t metric = 0;
};

std::vector<Ipv6DefaultRoute> readIpv6DefaultRoutes(std::string_view text);

}  // namespace toolkit::quorvah
