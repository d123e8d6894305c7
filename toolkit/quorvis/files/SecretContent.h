#pragma once

#include <string_view>

namespace toolkit::quorvis {

// Whether a file that starts with these bytes is a private key in binary form or a key store: PKCS #12, Java, Kerberos,
// PuTTY, GnuPG, a password manager. `size` is the size of the file.
bool beginsAsKey(std::string_view start, std::size_t size);

// Whether a text contains a private key (PEM, also in base64 or with escaped line ends, OpenSSH, OpenPGP, WireGuard, age)
// or the hash of a password, as in /etc/shadow.
bool holdsKey(std::string_view text);

}  // namespace toolkit::quorvis
