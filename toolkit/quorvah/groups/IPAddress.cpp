#include <optional>
#include <string>
#include <vector>

#include "schema/groups/IPAddress.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/IpAddresses.h"

namespace toolkit::quorvah {
namespace {

std::vector<std::string> nameServers(const Root& root) {
    std::vector<std::string> servers;
    const std::optional<std::string> text = root.read("/etc/resolv.conf");
    if (!text) return servers;
    std::string_view rest = *text;
    std::string_view line;
    while (nextLine(rest, line)) {
        if (nextWord(line) != "nameserver") continue;
        const std::string_view server = nextWord(line);
        if (!server.empty()) servers.emplace_back(server);
    }
    return servers;
}

// No name server is reached through an address of the loopback.
bool isLoopback(const Ipv4Address& address) {
    return address.address >> 24 == 127;
}

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::vector<std::string> servers = nameServers(root);
    for (const Ipv4Address& address : findIpv4Addresses(root, data)) {
        Instance& instance = data.add(ipv4Text(address.address));
        instance.set("Name", address.interface);
        if (address.prefixLength >= 0) {
            instance.set("SubnetMask", ipv4Text(maskOf(address.prefixLength)));
            instance.set("PrefixLength", address.prefixLength);
        }
        instance.set("AddressOrigin", address.origin);
        instance.set("BroadcastAddress", address.broadcast);
        instance.set("PeerAddress", address.peer);
        instance.set("Scope", address.scope);
        instance.set("Label", address.label);
        instance.set("Gateway", address.gateway);
        instance.set("MacAddress", macAddress(root, address.interface));
        if (!isLoopback(address)) instance.set("NameServers", servers);
    }
}

}  // namespace

constexpr Group kIPAddress{.displayName = "IP Address",
                           .xmlName = "IPAddress",
                           .fields = schema::kIPAddress.fields,
                           .gather = gather};

}  // namespace toolkit::quorvah
