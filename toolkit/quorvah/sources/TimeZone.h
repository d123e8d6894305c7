#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct ZoneOffset {
    long minutes = 0;  // east of UTC, including daylight saving time
    bool daylight = false;
};

// The offset of the zone in /etc/localtime of the scanned machine at a time; std::nullopt if the tree does not
// contain the rules of the zone.
std::optional<ZoneOffset> zoneOffset(const Root& root, std::int64_t time);

// The name of the zone, "Europe/Vienna".
std::string zoneName(const Root& root);

}  // namespace toolkit::quorvah
