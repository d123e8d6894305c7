#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct ZoneOffset {
    long minutes = 0;  // east of Greenwich, summer time included
    bool daylight = false;
};

// What the scanned machine's own zone, that of /etc/localtime, means at a time. None when the tree does not
// hold the zone's rules.
std::optional<ZoneOffset> zoneOffset(const Root& root, std::int64_t time);

// "Europe/Vienna".
std::string zoneName(const Root& root);

}  // namespace toolkit::quorvah
