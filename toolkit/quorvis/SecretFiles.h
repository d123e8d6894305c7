#pragma once

#include <string_view>

namespace toolkit::quorvis {

// Whether the content of the file with this path, which names no links, is nobody's business: password hashes, private
// keys (/etc/ssl/private, what lies in a directory .ssh or .gnupg, the host keys ...), the memory and environment of
// processes, devices.
bool holdsSecrets(std::string_view path);

}  // namespace toolkit::quorvis
