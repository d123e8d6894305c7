#pragma once

#include <string_view>

namespace toolkit::quorvis {

// Whether a file of this path is known to hold passwords, keys, tokens, or what somebody has typed, as copies that
// editors and administrators leave beside such files are. Capitals make no difference.
bool isSecretByName(std::string_view path);

}  // namespace toolkit::quorvis
