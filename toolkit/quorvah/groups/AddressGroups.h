// What the two groups of addresses have in common.
#pragma once

#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/report/Report.h"
#include "toolkit/quorvah/sources/Addresses.h"

namespace toolkit::quorvah {

// The addresses of the scanned machine. A report of a live machine whose kernel does not answer becomes
// partial.
std::vector<Ipv4Address> findIpv4Addresses(const Root& root, Report& report);
std::vector<Ipv6Address> findIpv6Addresses(const Root& root, Report& report);

// The hardware address of an interface; empty for one without, such as the loopback.
std::string macAddress(const Root& root, const std::string& interface);

}  // namespace toolkit::quorvah
