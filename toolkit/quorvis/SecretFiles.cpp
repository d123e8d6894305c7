#include "toolkit/quorvis/SecretFiles.h"

#include <algorithm>
#include <array>
#include <string>

#include "toolkit/machine/Lines.h"

namespace toolkit::quorvis {

namespace {

constexpr std::array<std::string_view, 8> kFiles = {
    "/etc/shadow",  "/etc/shadow-",          "/etc/gshadow",     "/etc/gshadow-",
    "/etc/opasswd", "/etc/security/opasswd", "/etc/krb5.keytab", "/proc/kcore",
};

constexpr std::array<std::string_view, 9> kDirectories = {
    "/dev",
    "/etc/ssl/private",
    "/etc/letsencrypt/archive",
    "/etc/letsencrypt/keys",
    "/etc/letsencrypt/live",
    "/etc/wireguard",
    "/etc/ipsec.d/private",
    "/etc/swanctl/private",
    "/var/lib/sss/secrets",
};

bool liesIn(std::string_view path, std::string_view directory) {
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

// With single slashes and without ".".
std::string tidied(std::string_view path) {
    std::string tidy;
    while (!path.empty()) {
        const std::string_view name = takeField(path, '/');
        if (!name.empty() && name != ".") tidy.append(1, '/').append(name);
    }
    return tidy;
}

// /etc/pki/tls/private/localhost.key
bool isPrivateKey(std::string_view path) {
    if (path.find("/.ssh/") != std::string_view::npos || path.find("/.gnupg/") != std::string_view::npos)
        return true;
    if (liesIn(path, "/etc/ssh")) return path.ends_with("_key");
    return liesIn(path, "/etc/pki") && path.find("/private/") != std::string_view::npos;
}

// /proc/1/task/1/environ
bool isOfProcess(std::string_view path) {
    return liesIn(path, "/proc") && (path.ends_with("/environ") || path.ends_with("/mem"));
}

}  // namespace

bool holdsSecrets(std::string_view path) {
    const std::string tidy = tidied(path);
    const auto holdsIt = [&](std::string_view directory) { return liesIn(tidy, directory); };
    return std::ranges::find(kFiles, tidy) != kFiles.end() || std::ranges::any_of(kDirectories, holdsIt) ||
           isPrivateKey(tidy) || isOfProcess(tidy);
}

}  // namespace toolkit::quorvis
