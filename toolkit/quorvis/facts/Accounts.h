#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvis {

// The number of a user of the scanned machine, whose own /etc/passwd is asked; none when it knows no such name.
std::optional<std::uint32_t> userNumber(const Root& root, std::string_view name);

}  // namespace toolkit::quorvis
