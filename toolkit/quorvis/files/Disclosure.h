// What signatures may see of files: by mode and place, by name, and by content.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Decides what signatures may see of the files of a machine. A privileged scanner discloses only what every user of the
// machine may see, and the trees that the settings permit. An unprivileged scanner discloses what it may see itself. The
// top of the scanned tree is always disclosed. Paths are those in the scanned tree, without links.
class Disclosure {
  public:
    explicit Disclosure(const Settings& settings);
    // `privileged`: whether this process may see more than other users.
    Disclosure(const Settings& settings, bool privileged);

    // Whether a directory may be searched. `path` is that of the child that is looked up, or of the directory itself if
    // any child may be.
    bool ofSearch(const struct stat& directory, std::string_view path) const;
    // Whether the names in the directory at `path` may be listed.
    bool ofNames(const struct stat& directory, std::string_view path) const;
    // Whether the content of the file at `path` may be read.
    bool ofContent(const struct stat& file, std::string_view path) const;
    // Whether there may be directories of which only some children are disclosed.
    bool differs() const { return privileged_ && !trees_.empty() && !seesAll_; }
    // Whether everything is disclosed that this process can read.
    bool seesAll() const { return seesAll_; }

  private:
    bool liesInTree(std::string_view path) const;

    bool privileged_;
    bool seesAll_ = false;
    std::vector<std::string> trees_;
};

// Whether `path` is `directory` or lies below it.
bool liesIn(std::string_view path, std::string_view directory);

// The path with single slashes and without "." and a trailing slash; empty for the root.
std::string normalizedPath(std::string_view path);

// Whether an open file lies on a pseudo file system of the kernel, for example of processes, devices, debugging or control
// groups, regardless of the mount point. The descriptor may be one that was opened with O_PATH.
bool isOnPseudoFileSystem(int descriptor);

// Whether files with this path are known to contain passwords, keys, tokens or command histories. Backup copies of such
// files count as well. Case-insensitive.
bool isSecretByName(std::string_view path);

// Whether a file that starts with these bytes is a private key in binary form or a key store: PKCS #12, Java, Kerberos,
// PuTTY, GnuPG, a password manager. `size` is the size of the file.
bool beginsAsKey(std::string_view start, std::size_t size);

// Whether a text contains a private key (PEM, also in base64 or with escaped line ends, OpenSSH, OpenPGP, WireGuard, age)
// or the hash of a password, as in /etc/shadow.
bool holdsKey(std::string_view text);

}  // namespace toolkit::quorvis
