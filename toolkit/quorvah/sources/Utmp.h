#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The process ids of the user sessions in a utmp file of any byte order and word size.
std::vector<unsigned> userSessions(std::string_view utmp);

// The number of user sessions; std::nullopt if the system has no utmp file.
std::optional<std::size_t> countUsers(const Root& root);

}  // namespace toolkit::quorvah
