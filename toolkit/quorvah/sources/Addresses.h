// The addresses of this system, from the kernel's answer or from a tree's files.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/sources/Netlink.h"
#include "toolkit/quorvah/sources/ProcNet.h"

namespace toolkit::quorvah {

// What is not known is empty, a prefix length -1.
struct Ipv4Address {
    std::uint32_t address = 0;
    std::string interface;
    int prefixLength = -1;
    std::string_view origin;  // "Static", "DHCP", "LinkLocal"
    std::string broadcast;
    std::string peer;
    std::string_view scope;  // "global", "site", "link", "host"
    std::string label;
    std::string gateway;  // of the interface's best default route
};

struct Ipv6Address {
    InetBytes address{};
    std::string interface;
    unsigned prefixLength = 0;
    std::string_view origin;  // "Static", "DHCPv6", "SLAAC", "LinkLocal"
    std::string_view scope;
    bool temporary = false;
    bool deprecated = false;
    bool tentative = false;
    std::string gateway;
};

// The name of the interface with that number.
using InterfaceName = std::function<std::string(unsigned)>;

std::vector<Ipv4Address> ipv4Addresses(const NetlinkAnswer& answer, const InterfaceName& nameOf);
std::vector<Ipv6Address> ipv6Addresses(const NetlinkAnswer& answer, const InterfaceName& nameOf);

std::vector<Ipv4Address> ipv4Addresses(const std::vector<TrieAddress>& addresses,
                                       const std::vector<Ipv4Route>& routes);
std::vector<Ipv6Address> ipv6Addresses(const std::vector<Inet6Address>& addresses,
                                       const std::vector<Ipv6DefaultRoute>& routes);

// The kind of an address in the words of CIM: "Loopback", "Multicast", "Link Local Unicast", "Site Local
// Unicast", "Embedded IPv4 Address", "Unspecified", "Global Unicast".
std::string_view ipv6AddressType(const InetBytes& address);

}  // namespace toolkit::quorvah
