// What the kernel tells of addresses and routes over netlink.
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
    std::uint8_t protocol = 0;  // IFAPROT_..., 0 when the kernel does not say
    bool hasPeer = false;
    bool hasBroadcast = false;
    bool finite = false;  // its life ends some day
    IpAddressBytes address{};
    IpAddressBytes peer{};
    IpAddressBytes broadcast{};
    std::string label;
};

// A way out to a gateway that a default route of the main table names; a route with several such ways gives
// several.
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

// Adds what one block of messages tells to `answer`. More until a block holds the end of the dump; Failed
// when it holds an error. A message that is cut off ends the block.
NetlinkState readNetlinkBlock(std::string_view block, NetlinkAnswer& answer);

// Asks the kernel for all addresses and routes. False when it does not answer; `answer` then holds what had
// come.
bool askNetlink(NetlinkAnswer& answer);

}  // namespace toolkit::quorvah
