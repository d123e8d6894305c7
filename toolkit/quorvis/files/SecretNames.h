#pragma once

#include <string_view>

namespace toolkit::quorvis {

// Whether files with this path are known to contain passwords, keys, tokens or command histories. Backup copies of such
// files count as well. Case-insensitive.
bool isSecretByName(std::string_view path);

}  // namespace toolkit::quorvis
