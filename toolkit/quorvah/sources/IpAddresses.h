// The IP addresses of a system, from the kernel over netlink or from the files of a tree.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Netlink.h"
#include "toolkit/quorvah/sources/ProcNet.h"

namespace toolkit::quorvah {

// Unknown texts are empty, an unknown prefix length is -1.
struct Ipv4Address {
    std::uint32_t address = 0;
    std::string interface;
    int prefixLength = -1;
    std::string_view origin;  // "Static", "DHCP", "LinkLocal"
    std::string broadcast;
    std::string peer;
    std::string_view scope;  // "global", "site", "link", "host"
    std::string label;
    std::string gateway;  // of the default route with the lowest metric
};

struct Ipv6Address {
    IpAddressBytes address{};
    std::string interface;
    unsigned prefixLength = 0;
    std::string_view origin;  // "Static", "DHCPv6", "SLAAC", "LinkLocal"
    std::string_view scope;
    bool temporary = false;
    bool deprecated = false;
    bool tentative = false;
    std::string gateway;
};

// Returns the name of the interface with this index.
using InterfaceName = std::function<std::string(unsigned)>;

std::vector<Ipv4Address> ipv4Addresses(const NetlinkAnswer& answer, const InterfaceName& nameOf);
std::vector<Ipv6Address> ipv6Addresses(const NetlinkAnswer& answer, const InterfaceName& nameOf);

// `loopback` is the name of the loopback interface, which has no routes.
std::vector<Ipv4Address> ipv4Addresses(const std::vector<FibTrieAddress>& addresses,
                                       const std::vector<Ipv4Route>& routes, const std::string& loopback);
std::vector<Ipv6Address> ipv6Addresses(const std::vector<Inet6Address>& addresses,
                                       const std::vector<Ipv6DefaultRoute>& routes);

// The kind of an address, as CIM names it: "Loopback", "Multicast", "Link Local Unicast", "Site Local
// Unicast", "Embedded IPv4 Address", "Unspecified", "Global Unicast".
std::string_view ipv6AddressType(const IpAddressBytes& address);

// The addresses of the scanned machine. `data` becomes partial if the kernel of the live machine does not answer, and
// not applicable if the tree has no list of addresses.
std::vector<Ipv4Address> findIpv4Addresses(const Root& root, GroupData& data);
std::vector<Ipv6Address> findIpv6Addresses(const Root& root, GroupData& data);

// The hardware address of an interface; empty for an interface without one, such as the loopback.
std::string macAddress(const Root& root, const std::string& interface);

}  // namespace toolkit::quorvah
