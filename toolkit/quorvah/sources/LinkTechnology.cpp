#include "toolkit/quorvah/sources/LinkTechnology.h"

#include <net/if_arp.h>

#include <algorithm>
#include <iterator>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {
namespace {

constexpr int kTypeNone = 0xFFFE;  // ARPHRD_NONE
constexpr int kTypeIp6Gre = 823;   // ARPHRD_IP6GRE

bool isTunnelType(int type) {
    switch (type) {
        case ARPHRD_TUNNEL:
        case ARPHRD_TUNNEL6:
        case ARPHRD_SIT:
        case ARPHRD_IPGRE:
        case ARPHRD_PPP:
        case kTypeIp6Gre:
        case kTypeNone:
            return true;
        default:
            return false;
    }
}

// The names of kinds in uevent, and those that the kernel gives as the driver of interfaces without hardware.
bool isTunnelKind(std::string_view kind) {
    constexpr std::string_view kKinds[] = {"vxlan",  "geneve", "gre",     "wireguard", "ppp",
                                           "gretap", "erspan", "ip6gre",  "ip6gretap", "ip6erspan",
                                           "ipip",   "sit",    "ip6tnl",  "vti",       "vti6",
                                           "xfrm",   "gtp",    "bareudp", "l2tp",      "tun"};
    return std::ranges::find(kKinds, kind) != std::end(kKinds);
}

// The devices that the modules of tunnels make by themselves. Nothing else in sysfs shows their kind.
bool isTunnelName(std::string_view name) {
    for (const std::string_view kind : {"gretap", "erspan", "ip6gretap", "ip6erspan", "gre", "tunl", "sit"}) {
        if (name.starts_with(kind) && readCount(name.substr(kind.size()))) return true;
    }
    return false;
}

}  // namespace

std::string_view linkTechnology(const LinkTraits& traits) {
    if (traits.type == ARPHRD_LOOPBACK) return "Loopback";
    if (traits.type == ARPHRD_INFINIBAND) return "InfiniBand";
    if (traits.wireless || traits.devType == "wlan") return "WirelessLAN";
    if (traits.bridge || traits.devType == "bridge") return "Bridge";
    if (traits.bonding || traits.devType == "bond") return "Bond";
    if (traits.devType == "vlan") return "VLAN";
    // A modem for mobile networks, which is of another technology than the ones that have a name here.
    if (traits.devType == "wwan") return {};
    if (traits.tun || isTunnelKind(traits.devType)) return "Tunnel";
    const bool tunnel = isTunnelType(traits.type) || isTunnelKind(traits.driver) || isTunnelName(traits.name);
    if (!traits.hasDevice && tunnel) return "Tunnel";
    if (traits.type == ARPHRD_ETHER) return traits.hasDevice ? "Ethernet" : "Virtual";
    return traits.hasDevice || traits.type < 0 ? std::string_view() : "Virtual";
}

}  // namespace toolkit::quorvah
