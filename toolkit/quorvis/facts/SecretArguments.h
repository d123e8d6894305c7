#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvis {

// The arguments of a process, each of which ends in a NUL, with blanks between them and without what they keep secret:
// "***" stands for the values of options and assignments whose names tell of a password, key or token ("--password=x",
// "--token x", "-Dx.key=v", "PGPASSWORD=x", "Authorization: x", "-px"), for users and passwords in addresses, and for
// whatever looks like a key itself. When in doubt a value is left out.
std::string argumentsWithoutSecrets(std::string_view arguments);

}  // namespace toolkit::quorvis
