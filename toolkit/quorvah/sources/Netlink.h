// Addresses and routes from the kernel over netlink.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/sources/IpAddressText.h"

namespace toolkit::quorvah {

struct NetlinkAddress {
    int family = 0;  // AF_INET or AF_INET6
    unsigned interface = 0;
    unsigned prefixLength = 0;
    unsigned scope = 0;         // RT_SCOPE_...
    std::uint32_t flags = 0;    // IFA_F_...
    std::uint8_t protocol = 0;  // IFAPROT_..., or 0 if the kernel does not state it
    bool hasPeer = false;
    bool hasBroadcast = false;
    bool finite = false;  // it has a limited lifetime
    IpAddressBytes address{};
    IpAddressBytes peer{};
    IpAddressBytes broadcast{};
    std::string label;
};

// A gateway of a default route in the main table. A route with several next hops gives several.
struct NetlinkGateway {
    int family = 0;
    unsigned interface = 0;
    std::uint32_t metric = 0;
    IpAddressBytes gateway{};
};

struct NetlinkAnswer {
    std::vector<NetlinkAddress> addresses;
    std::vector<NetlinkGateway> gateways;
};

enum class NetlinkState { More, Done, Failed };

// Adds the content of a block of messages to `answer`. Returns Done if the block contains the end of the dump, Failed
// if it contains an error, and otherwise More. An incomplete message ends the block.
NetlinkState readNetlinkBlock(std::string_view block, NetlinkAnswer& answer);

// Asks the kernel for all addresses and routes. Returns false if it does not answer; `answer` then contains what was
// received.
bool askNetlink(NetlinkAnswer& answer);

}  // namespace toolkit::quorvah
