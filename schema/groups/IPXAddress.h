#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kIPXAddressFields[] = {
    {.name = "NetworkAddress",
     .type = Type::Hex,
     .key = true,
     .meaning = "number of the network",
     .source = "`/proc/net/ipx/interface`"},
    {.name = "NodeAddress",
     .type = Type::Hex,
     .key = true,
     .privacy = Privacy::Address,
     .meaning = "number of the node",
     .source = "`/proc/net/ipx/interface`"},
    {.name = "DeviceName", .key = true, .meaning = "interface", .source = "`/proc/net/ipx/interface`"},
    {.name = "FrameType", .meaning = "kind of frames, `802.3`", .source = "`/proc/net/ipx/interface`"},
};

inline constexpr Group kIPXAddress{
    .id = 12,
    .name = "IPX Address",
    .element = "IPXAddress",
    .about = "IPX addresses of kernels before 4.18. Newer kernels have no IPX: not applicable (`no-ipx`).",
    .fields = kIPXAddressFields,
    .columns = "DeviceName NetworkAddress NodeAddress FrameType",
};

}  // namespace schema
