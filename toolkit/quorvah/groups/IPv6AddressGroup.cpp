#include <string>

#include "toolkit/quorvah/groups/AddressGroups.h"
#include "toolkit/quorvah/report/Group.h"
#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {
namespace {

constexpr FieldDef kFields[] = {
    {"IPv6Address", FieldDef::kPrivate | FieldDef::kBytewise},
    {"Name"},
    {"PrefixLength"},
    {"AddressOrigin"},
    {"IPv6AddressType"},
    {"Scope"},
    {"Temporary"},
    {"Deprecated", FieldDef::kVolatile},
    {"Tentative", FieldDef::kVolatile},
    {"Gateway", FieldDef::kPrivate},
    {"MacAddress", FieldDef::kPrivate},
};

void gather(Scan& scan, Report& report) {
    const Root& root = scan.root();
    for (const Ipv6Address& address : findIpv6Addresses(root, report)) {
        Instance& instance = report.add(ipv6Text(address.address));
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

extern const Group kIPv6Address;
constexpr Group kIPv6Address{"IPv6 Address", "IPv6Address", kFields, gather};

}  // namespace toolkit::quorvah
