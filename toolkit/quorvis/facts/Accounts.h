// The user accounts of the scanned machine: those of its own /etc/passwd.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvis {

// The number of a user. None when there is no user with this name.
std::optional<std::uint32_t> userNumber(const Root& root, std::string_view name);

// The names of all users by number: the first name of a number that has several.
std::map<std::uint32_t, std::string> userNames(const Root& root);

}  // namespace toolkit::quorvis
