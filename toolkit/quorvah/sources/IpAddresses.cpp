#include "toolkit/quorvah/sources/IpAddresses.h"

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>

#include "toolkit/quorvah/sources/NetworkNamespace.h"

namespace toolkit::quorvah {
namespace {

constexpr std::uint8_t kFromRouter = 2;               // IFAPROT_KERNEL_RA
constexpr std::string_view kLinkLocal = "LinkLocal";  // no gateway is reached from such an address

std::string_view scopeName(unsigned scope) {
    switch (scope) {
        case RT_SCOPE_UNIVERSE:
            return "global";
        case RT_SCOPE_SITE:
            return "site";
        case RT_SCOPE_LINK:
            return "link";
        case RT_SCOPE_HOST:
            return "host";
        default:
            return {};
    }
}

// The scope numbers in /proc/net/if_inet6.
std::string_view inet6ScopeName(unsigned scope) {
    switch (scope) {
        case 0x00:
            return "global";
        case 0x10:
            return "host";
        case 0x20:
            return "link";
        case 0x40:
            return "site";
        default:
            return {};
    }
}

bool isIpv4LinkLocal(std::uint32_t address) {
    return address >> 16 == 0xA9FE;
}

in6_addr asIn6(const IpAddressBytes& address) {
    in6_addr result;
    std::memcpy(&result, address.data(), sizeof result);
    return result;
}

// An address with a limited lifetime was assigned. DHCPv6 servers assign single addresses, router advertisements
// assign prefixes.
std::string_view ipv6Origin(const IpAddressBytes& address, unsigned prefixLength, std::uint32_t flags,
                            std::uint8_t protocol) {
    const in6_addr bytes = asIn6(address);
    if (IN6_IS_ADDR_LINKLOCAL(&bytes)) return kLinkLocal;
    if (protocol == kFromRouter || (flags & (IFA_F_TEMPORARY | IFA_F_MANAGETEMPADDR)) != 0) return "SLAAC";
    if ((flags & IFA_F_PERMANENT) != 0) return "Static";
    return prefixLength == 128 ? "DHCPv6" : "SLAAC";
}

void setFlags(std::uint32_t flags, Ipv6Address& address) {
    address.temporary = (flags & IFA_F_TEMPORARY) != 0;
    address.deprecated = (flags & IFA_F_DEPRECATED) != 0;
    address.tentative = (flags & IFA_F_TENTATIVE) != 0;
}

const NetlinkGateway* bestGateway(const NetlinkAnswer& answer, int family, unsigned interface) {
    const NetlinkGateway* best = nullptr;
    for (const NetlinkGateway& gateway : answer.gateways) {
        if (gateway.family != family || gateway.interface != interface) continue;
        if (best == nullptr || gateway.metric < best->metric) best = &gateway;
    }
    return best;
}

// The interface with the smallest network that contains the address; empty if two have networks of the same size.
std::string interfaceOf(std::uint32_t address, const std::vector<Ipv4Route>& routes) {
    const Ipv4Route* best = nullptr;
    bool ambiguous = false;
    for (const Ipv4Route& route : routes) {
        const bool holds =
            route.gateway == 0 && route.mask != 0 && (address & route.mask) == route.destination;
        if (!holds || (best != nullptr && route.mask < best->mask)) continue;
        ambiguous = best != nullptr && route.mask == best->mask && route.interface != best->interface;
        best = &route;
    }
    return best == nullptr || ambiguous ? std::string() : best->interface;
}

// The default route of an interface with the lowest metric.
template <class Route, class IsDefault>
const Route* bestRoute(const std::vector<Route>& routes, const std::string& interface, IsDefault isDefault) {
    const Route* best = nullptr;
    for (const Route& route : routes) {
        if (route.interface != interface || !isDefault(route)) continue;
        if (best == nullptr || route.metric < best->metric) best = &route;
    }
    return best;
}

std::string interfaceName(unsigned index) {
    char name[IF_NAMESIZE];
    return if_indextoname(index, name) == nullptr ? std::string() : std::string(name);
}

NetlinkAnswer askKernel(GroupData& data) {
    NetlinkAnswer answer;
    if (!askNetlink(answer)) data.partial("netlink");
    return answer;
}

std::string readOrEmpty(const Root& root, std::string_view path) {
    // Every address is compared with every route, so the time grows with the square of the size.
    constexpr std::size_t kMaxSize = std::size_t{1} << 20;
    return root.read(path, kMaxSize).value_or(std::string());
}

// Reads the file that lists the addresses of a tree.
std::string readSource(const Root& root, std::string_view path, GroupData& data) {
    if (!root.exists(path)) data.notApplicable("not-in-tree");
    return readOrEmpty(root, path);
}

// The interface of the kind "loopback", else the one that has the address ::1. Empty if no file tells.
std::string loopbackInterface(const Root& root) {
    for (const std::string& name : root.list("/sys/class/net")) {
        if (root.readCount("/sys/class/net/" + name + "/type") == ARPHRD_LOOPBACK) return name;
    }
    for (const Inet6Address& entry : readIfInet6(readOrEmpty(root, "/proc/net/if_inet6"))) {
        const in6_addr address = asIn6(entry.address);
        if (IN6_IS_ADDR_LOOPBACK(&address)) return entry.interface;
    }
    return {};
}

}  // namespace

std::vector<Ipv4Address> ipv4Addresses(const NetlinkAnswer& answer, const InterfaceName& nameOf) {
    std::vector<Ipv4Address> addresses;
    for (const NetlinkAddress& entry : answer.addresses) {
        if (entry.family != AF_INET) continue;
        Ipv4Address address;
        address.address = ipv4Of(entry.address);
        address.interface = nameOf(entry.interface);
        address.prefixLength = static_cast<int>(entry.prefixLength);
        address.origin = isIpv4LinkLocal(address.address) ? kLinkLocal : entry.finite ? "DHCP" : "Static";
        if (entry.hasBroadcast) address.broadcast = ipv4Text(ipv4Of(entry.broadcast));
        if (entry.hasPeer) address.peer = ipv4Text(ipv4Of(entry.peer));
        address.scope = scopeName(entry.scope);
        address.label = entry.label;
        const NetlinkGateway* const gateway = bestGateway(answer, AF_INET, entry.interface);
        if (gateway != nullptr && address.origin != kLinkLocal)
            address.gateway = ipv4Text(ipv4Of(gateway->gateway));
        addresses.push_back(std::move(address));
    }
    return addresses;
}

std::vector<Ipv6Address> ipv6Addresses(const NetlinkAnswer& answer, const InterfaceName& nameOf) {
    std::vector<Ipv6Address> addresses;
    for (const NetlinkAddress& entry : answer.addresses) {
        if (entry.family != AF_INET6) continue;
        Ipv6Address address;
        address.address = entry.address;
        address.interface = nameOf(entry.interface);
        address.prefixLength = entry.prefixLength;
        address.origin = ipv6Origin(entry.address, entry.prefixLength, entry.flags, entry.protocol);
        address.scope = scopeName(entry.scope);
        setFlags(entry.flags, address);
        const NetlinkGateway* const gateway = bestGateway(answer, AF_INET6, entry.interface);
        if (gateway != nullptr && address.origin != kLinkLocal) address.gateway = ipv6Text(gateway->gateway);
        addresses.push_back(std::move(address));
    }
    return addresses;
}

std::vector<Ipv4Address> ipv4Addresses(const std::vector<FibTrieAddress>& entries,
                                       const std::vector<Ipv4Route>& routes, const std::string& loopback) {
    std::vector<Ipv4Address> addresses;
    for (const FibTrieAddress& entry : entries) {
        Ipv4Address address;
        address.address = entry.address;
        address.interface = entry.loopback ? loopback : interfaceOf(entry.address, routes);
        address.prefixLength = entry.prefixLength;
        if (isIpv4LinkLocal(entry.address)) address.origin = kLinkLocal;
        if (entry.broadcastKnown) address.broadcast = ipv4Text(entry.broadcast);
        const Ipv4Route* const gateway = bestRoute(routes, address.interface, [](const Ipv4Route& route) {
            return route.mask == 0 && route.destination == 0 && route.gateway != 0;
        });
        if (gateway != nullptr && address.origin != kLinkLocal) address.gateway = ipv4Text(gateway->gateway);
        addresses.push_back(std::move(address));
    }
    return addresses;
}

std::vector<Ipv6Address> ipv6Addresses(const std::vector<Inet6Address>& entries,
                                       const std::vector<Ipv6DefaultRoute>& routes) {
    std::vector<Ipv6Address> addresses;
    for (const Inet6Address& entry : entries) {
        Ipv6Address address;
        address.address = entry.address;
        address.interface = entry.interface;
        address.prefixLength = entry.prefixLength;
        address.origin = ipv6Origin(entry.address, entry.prefixLength, entry.flags, 0);
        address.scope = inet6ScopeName(entry.scope);
        setFlags(entry.flags, address);
        const Ipv6DefaultRoute* const gateway =
            bestRoute(routes, entry.interface, [](const Ipv6DefaultRoute&) { return true; });
        if (gateway != nullptr && address.origin != kLinkLocal) address.gateway = ipv6Text(gateway->gateway);
        addresses.push_back(std::move(address));
    }
    return addresses;
}

std::string_view ipv6AddressType(const IpAddressBytes& address) {
    const in6_addr bytes = asIn6(address);
    if (IN6_IS_ADDR_UNSPECIFIED(&bytes)) return "Unspecified";
    if (IN6_IS_ADDR_LOOPBACK(&bytes)) return "Loopback";
    if (IN6_IS_ADDR_MULTICAST(&bytes)) return "Multicast";
    if (IN6_IS_ADDR_LINKLOCAL(&bytes)) return "Link Local Unicast";
    if (IN6_IS_ADDR_SITELOCAL(&bytes)) return "Site Local Unicast";
    if (IN6_IS_ADDR_V4MAPPED(&bytes) || IN6_IS_ADDR_V4COMPAT(&bytes)) return "Embedded IPv4 Address";
    return "Global Unicast";
}

std::vector<Ipv4Address> findIpv4Addresses(const Root& root, GroupData& data) {
    if (root.live()) return ipv4Addresses(askKernel(data), interfaceName);
    return ipv4Addresses(readFibTrie(readSource(root, "/proc/net/fib_trie", data)),
                         readRoutes(readOrEmpty(root, "/proc/net/route")), loopbackInterface(root));
}

std::vector<Ipv6Address> findIpv6Addresses(const Root& root, GroupData& data) {
    if (root.live()) return ipv6Addresses(askKernel(data), interfaceName);
    return ipv6Addresses(readIfInet6(readSource(root, "/proc/net/if_inet6", data)),
                         readIpv6DefaultRoutes(readOrEmpty(root, "/proc/net/ipv6_route")));
}

std::string macAddress(const Root& root, const std::string& interface) {
    if (interface.empty()) return {};
    if (root.live() && !NetworkNamespace().has(root, interface)) return {};
    std::string address = root.readLine("/sys/class/net/" + interface + "/address");
    // Six bytes. The shorter address of a tunnel is its IPv4 address.
    static constexpr std::size_t kMinLength = 17;
    if (address.size() < kMinLength || address.find_first_not_of("0:") == std::string::npos) return {};
    return address;
}

}  // namespace toolkit::quorvah
