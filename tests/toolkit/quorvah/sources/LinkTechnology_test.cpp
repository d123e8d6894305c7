#include "toolkit/quorvah/sources/LinkTechnology.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(LinkTechnology, DependsOnTheFilesInSysfs) {
    const struct {
        LinkTraits traits;
        const char* technology;
    } kCases[] = {
        {{1, "", true, false, false, false, false}, "Ethernet"},
        {{1, "", false, false, false, false, false}, "Virtual"},
        {{1, "wlan", true, false, false, false, false}, "WirelessLAN"},
        {{1, "", true, true, false, false, false}, "WirelessLAN"},
        {{1, "bridge", false, false, true, false, false}, "Bridge"},
        {{1, "", false, false, false, true, false}, "Bond"},
        {{1, "vlan", false, false, false, false, false}, "VLAN"},
        {{1, "vxlan", false, false, false, false, false}, "Tunnel"},
        {{1, "", false, false, false, false, true}, "Tunnel"},
        {{776, "", false, false, false, false, false}, "Tunnel"},
        {{65534, "", false, false, false, false, false}, "Tunnel"},
        {{772, "", false, false, false, false, false}, "Loopback"},
        {{32, "", true, false, false, false, false}, "InfiniBand"},
        {{280, "", false, false, false, false, false}, "Virtual"},
        {{280, "", true, false, false, false, false}, ""},
        {{1, "", false, false, false, false, false, "gretap"}, "Tunnel"},
        {{1, "", false, false, false, false, false, "erspan"}, "Tunnel"},
        {{1, "", false, false, false, false, false, "", "erspan0"}, "Tunnel"},
        {{1, "", false, false, false, false, false, "", "ip6gretap0"}, "Tunnel"},
        {{1, "", false, false, false, false, false, "veth", "site0"}, "Virtual"},
        {{1, "", true, false, false, false, false, "", "gre0"}, "Ethernet"},
        {{65534, "wwan", false, false, false, false, false}, ""},
        {{-1, "", false, false, false, false, false}, ""},
        {{-1, "", true, false, false, false, false}, ""},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(test.technology, linkTechnology(test.traits))
            << test.traits.type << " " << test.traits.devType;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
