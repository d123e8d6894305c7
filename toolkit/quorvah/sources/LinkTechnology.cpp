#include "toolkit/quorvah/sources/LinkTechnology.h"

#include <net/if_arp.h>

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

bool isTunnelName(std::string_view devType) {
    return devType == "vxlan" || devType == "geneve" || devType == "gre" || devType == "wireguard" ||
           devType == "ppp" || devType == "gretap" || devType == "ip6gretap";
}

}  // namespace

std::string_view linkTechnology(const LinkTraits& traits) {
    if (traits.type == ARPHRD_LOOPBACK) return "Loopback";
    if (traits.type == ARPHRD_INFINIBAND) return "InfiniBand";
    if (traits.wireless || traits.devType == "wlan") return "WirelessLAN";
    if (traits.bridge || traits.devType == "bridge") return "Bridge";
    if (traits.bonding || traits.devType == "bond") return "Bond";
    if (traits.devType == "vlan") return "VLAN";
    if (traits.tun || isTunnelName(traits.devType) || (!traits.hasDevice && isTunnelType(traits.type)))
        return "Tunnel";
    if (traits.type == ARPHRD_ETHER) return traits.hasDevice ? "Ethernet" : "Virtual";
    return traits.hasDevice || traits.type < 0 ? std::string_view() : "Virtual";
}

}  // namespace toolkit::quorvah
