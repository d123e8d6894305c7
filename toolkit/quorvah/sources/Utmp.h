#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The process ids of the sessions of users in a utmp file, whatever the machine's byte order and word size.
std::vector<unsigned> userSessions(std::string_view utmp);

// How many sessions of users there are. None when the system keeps no such list.
std::optional<std::size_t> countUsers(const Root& root);

}  // namespace toolkit::quorvah
