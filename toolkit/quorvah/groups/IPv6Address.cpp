#include <string>

#include "schema/groups/IPv6Address.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/IpAddresses.h"

namespace toolkit::quorvah {
namespace {

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    for (const Ipv6Address& address : findIpv6Addresses(root, data)) {
        Instance& instance = data.add(ipv6Text(address.address));
        instance.set("Name", address.interface);
        instance.set("PrefixLength", address.prefixLength);
        instance.set("AddressOrigin", address.origin);
        instance.set("IPv6AddressType", ipv6AddressType(address.address));
        instance.set("Scope", address.scope);
        instance.set("Temporary", address.temporary);
        instance.set("Deprecated", address.deprecated);
        instance.set("Tentative", address.tentative);
        instance.set("Gateway", address.gateway);
        instance.set("MacAddress", macAddress(root, address.interface));
    }
}

}  // namespace

constexpr Group kIPv6Address{.displayName = "IPv6 Address",
                             .xmlName = "IPv6Address",
                             .fields = schema::kIPv6Address.fields,
                             .gather = gather};

}  // namespace toolkit::quorvah
