#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kIPv6AddressFields[] = {
    {.name = "IPv6Address",
     .type = Type::Ipv6Address,
     .key = true,
     .privacy = Privacy::Address,
     .bytewise = true,
     .meaning = "the address",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "Name", .key = true, .meaning = "interface", .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "PrefixLength",
     .type = Type::Count,
     .unit = "bits",
     .meaning = "length of the network's prefix",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "AddressOrigin",
     .type = Type::Choice,
     .choices = "Static|DHCPv6|SLAAC|LinkLocal",
     .liveTellsMore = true,
     .meaning = "how the interface got the address",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "IPv6AddressType",
     .meaning = "kind of address in CIM, `Global Unicast` and so on",
     .source = "the address"},
    {.name = "Scope",
     .type = Type::Choice,
     .choices = "global|site|link|host|nowhere",
     .meaning = "where the address is valid",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "Temporary",
     .type = Type::Boolean,
     .meaning = "whether the address is a temporary privacy address",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "Deprecated",
     .type = Type::Boolean,
     .isVolatile = true,
     .meaning = "whether the address is deprecated",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "Tentative",
     .type = Type::Boolean,
     .isVolatile = true,
     .meaning = "whether the address is still being verified",
     .source = "netlink; `/proc/net/if_inet6`"},
    {.name = "Gateway",
     .type = Type::Ipv6Address,
     .privacy = Privacy::Address,
     .meaning = "gateway of the default route; empty for a link-local address",
     .source = "netlink; `/proc/net/ipv6_route`"},
    {.name = "MacAddress",
     .type = Type::HardwareAddress,
     .privacy = Privacy::Address,
     .meaning = "hardware address of the interface",
     .source = "`/sys/class/net/*/address`"},
};

inline constexpr Group kIPv6Address{
    .id = 51,
    .name = "IPv6 Address",
    .element = "IPv6Address",
    .about = "One instance per IPv6 address.",
    .fields = kIPv6AddressFields,
};

}  // namespace schema
