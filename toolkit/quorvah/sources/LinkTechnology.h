#pragma once

#include <string_view>

namespace toolkit::quorvah {

// What sysfs tells of the kind of a network interface.
struct LinkTraits {
    int type = -1;             // ARPHRD_..., -1 unknown
    std::string_view devType;  // DEVTYPE of uevent
    bool hasDevice = false;    // there is hardware behind it
    bool wireless = false;
    bool bridge = false;
    bool bonding = false;
    bool tun = false;
};

// "Ethernet", "WirelessLAN", "InfiniBand", "Loopback", "Bridge", "Bond", "VLAN", "Tunnel" or "Virtual"; empty
// for hardware of another kind and when the type is unknown.
std::string_view linkTechnology(const LinkTraits& traits);

}  // namespace toolkit::quorvah
