#pragma once

#include <string_view>

namespace toolkit::quorvah {

// The properties that determine the kind of a network interface.
struct LinkTraits {
    int type = -1;             // ARPHRD_..., or -1 if unknown
    std::string_view devType;  // DEVTYPE in the file uevent
    bool hasDevice = false;    // it has hardware
    bool wireless = false;
    bool bridge = false;
    bool bonding = false;
    bool tun = false;
    std::string_view driver = {};  // of an interface without hardware its kind, "gretap"; empty if unknown
    std::string_view name = {};    // "gretap0"
};

// "Ethernet", "WirelessLAN", "InfiniBand", "Loopback", "Bridge", "Bond", "VLAN", "Tunnel" or "Virtual". Empty for
// other hardware and for an unknown type.
std::string_view linkTechnology(const LinkTraits& traits);

}  // namespace toolkit::quorvah
