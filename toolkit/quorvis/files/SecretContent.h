#pragma once

#include <string_view>

namespace toolkit::quorvis {

// Whether a file that begins like this is a store of keys: of PKCS #12, Java, Kerberos, PuTTY, GnuPG, a password manager,
// or a private key in binary form. `size` is that of the file.
bool beginsAsKey(std::string_view start, std::size_t size);

// Whether a text holds a private key or the hash of a password anywhere: PEM, also in base64 or with escaped line ends,
// OpenSSH, OpenPGP, WireGuard, age; lines as those of /etc/shadow.
bool holdsKey(std::string_view text);

}  // namespace toolkit::quorvis
