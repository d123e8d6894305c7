#include "toolkit/quorvis/files/Disclosure.h"

#include <algorithm>
#include <array>
#include <string>

#include "kest/Ascii.h"

namespace toolkit::quorvis {

namespace {

// Names of files in any directory, in lower case.
constexpr std::string_view kFiles[] = {
    // of the system
    "shadow",
    "gshadow",
    "master.passwd",
    "opasswd",
    "smbpasswd",
    "secrets.tdb",
    "passdb.tdb",
    "krb5.keytab",
    "ipsec.secrets",
    "chap-secrets",
    "pap-secrets",
    "psk.txt",
    "rndc.key",
    "session.key",
    "sasl_passwd",
    "sasl_passwd.db",
    "passwd.client",
    "debian.cnf",
    "wpa_supplicant.conf",
    "tomcat-users.xml",
    "wp-config.php",
    "credential.secret",
    "password",
    "passwords",
    "credentials",
    "credentials.json",
    "credentials.xml",
    "credentials.yml",
    "secrets.json",
    "secrets.yml",
    "secrets.yaml",
    "master.key",
    ".password",
    ".passwords",
    ".secret",
    ".secrets",
    // of users
    ".netrc",
    "_netrc",
    ".pgpass",
    "pgpass.conf",
    ".my.cnf",
    ".mylogin.cnf",
    ".git-credentials",
    ".npmrc",
    ".yarnrc.yml",
    ".pypirc",
    ".htpasswd",
    ".htdigest",
    ".dockercfg",
    ".dockerconfigjson",
    ".s3cfg",
    ".boto",
    ".vault-token",
    ".terraformrc",
    ".smbcredentials",
    ".cifs-credentials",
    ".credentials",
    ".authinfo",
    ".msmtprc",
    ".fetchmailrc",
    ".mbsyncrc",
    ".offlineimaprc",
    ".muttrc",
    ".cvspass",
    ".databricks.cfg",
    ".xauthority",
    ".iceauthority",
    ".rhosts",
    ".shosts",
    ".env",
    ".envrc",
    ".pam_environment",
    ".rnd",
    ".erlang.cookie",
    ".k5identity",
    ".lesshst",
    ".viminfo",
    ".histfile",
    ".zhistory",
    ".sh_history",
    ".history",
    ".dbshell",
    "wallet.dat",
    "key3.db",
    "key4.db",
    "logins.json",
    "signons.sqlite",
    "cookies.sqlite",
    "login data",
    "credentials.tfrc.json",
    "terraform.tfstate",
    "kubeconfig",
    "application_default_credentials.json",
    "access_tokens.db",
    "credentials.db",
    "consolehost_history.txt",
    "settings-security.xml",
    "filezilla.xml",
    "sitemanager.xml",
    "recentservers.xml",
    "rclone.conf",
    "accounts.xml",
    "kdc.conf.stash",
    "id_rsa",
    "id_dsa",
    "id_ecdsa",
    "id_ed25519",
    "id_ecdsa_sk",
    "id_ed25519_sk",
    "id_xmss",
};

constexpr std::string_view kEnds[] = {
    "_history",  ".keytab", ".kdb",    ".kdbx",   ".ppk",  ".p12",          ".pfx",    ".jks",     ".jceks",
    ".keystore", ".bks",    ".agekey", ".pgpass", ".ovpn", ".nmconnection", ".tfvars", ".keyring",
};

constexpr std::string_view kStarts[] = {".env.", "krb5cc_", "terraform.tfstate."};

// Directories at any place, in lower case.
constexpr std::string_view kDirectories[] = {
    ".ssh",
    ".gnupg",
    ".aws",
    ".azure",
    ".kube",
    ".docker",
    ".oci",
    ".password-store",
    ".putty",
    ".gcloud",
    ".vault",
    ".mozilla",
    ".thunderbird",
    ".purple",
    ".bitcoin",
    ".ethereum",
    ".electrum",
    ".subversion",
    ".config/gcloud",
    ".config/gh",
    ".config/hub",
    ".config/op",
    ".config/rclone",
    ".config/filezilla",
    ".config/google-chrome",
    ".config/chromium",
    ".config/doctl",
    ".config/composer/auth.json",
    ".config/remmina",
    ".config/solana",
    ".config/containers/auth.json",
    ".composer/auth.json",
    ".local/share/keyrings",
    ".local/share/kwalletd",
    ".local/share/remmina",
    ".local/share/gh",
    ".gnome2/keyrings",
    ".kde/share/apps/kwallet",
    ".terraform.d",
    ".cargo/credentials",
    ".cargo/credentials.toml",
    ".gem/credentials",
    ".m2/settings.xml",
    ".gradle/gradle.properties",
    ".pki",
    ".vnc",
    ".cloudflared",
};

// Files and directories with fixed paths, in lower case.
constexpr std::string_view kPlaces[] = {
    "/dev",
    "/proc",
    "/run/secrets",
    "/run/credentials",
    "/run/keys",
    "/run/user",
    "/var/run/secrets",
    "/run/networkmanager/system-connections",
    "/run/containers/0/auth.json",
    "/etc/networkmanager/system-connections",
    "/etc/apt/auth.conf",
    "/etc/apt/auth.conf.d",
    "/etc/bind/keys",
    "/etc/cloudflared",
    "/etc/credstore",
    "/etc/credstore.encrypted",
    "/run/credstore",
    "/usr/lib/credstore",
    "/etc/docker/key.json",
    "/etc/dovecot/private",
    "/etc/ipsec.d/private",
    "/etc/kubernetes/pki",
    "/etc/kubernetes/admin.conf",
    "/etc/kubernetes/super-admin.conf",
    "/etc/kubernetes/controller-manager.conf",
    "/etc/kubernetes/scheduler.conf",
    "/etc/krb5kdc",
    "/etc/letsencrypt/accounts",
    "/etc/letsencrypt/archive",
    "/etc/letsencrypt/keys",
    "/etc/letsencrypt/live",
    "/etc/luks",
    "/etc/cryptsetup-keys.d",
    "/etc/rancher",
    "/etc/samba/private",
    "/etc/security/opasswd",
    "/etc/ssl/private",
    "/etc/sudoers",
    "/etc/sudoers.d",
    "/etc/swanctl/private",
    "/etc/swanctl/rsa",
    "/etc/swanctl/ecdsa",
    "/etc/swanctl/pkcs8",
    "/etc/swanctl/pkcs12",
    "/etc/vault.d",
    "/etc/wireguard",
    "/etc/zerotier-one",
    "/var/crash",
    "/var/kerberos",
    "/var/lib/heimdal-kdc",
    "/var/lib/iwd",
    "/var/lib/bluetooth",
    "/var/lib/krb5kdc",
    "/var/lib/private",
    "/var/lib/rancher",
    "/var/lib/samba/private",
    "/var/lib/sss",
    "/var/lib/systemd/coredump",
    "/var/lib/systemd/random-seed",
    "/var/lib/tailscale",
    "/var/lib/zerotier-one",
    "/var/mail",
    "/var/spool/at",
    "/var/spool/cron",
    "/var/spool/mail",
};

// Suffixes of copies of a file.
constexpr std::string_view kCopySuffixes[] = {
    "~",        "-",         "+",         ".bak",       "_bak",      "-bak",     ".old",
    "_old",     "-old",      ".orig",     ".org",       ".save",     ".sav",     ".saved",
    ".swp",     ".swo",      ".tmp",      ".temp",      ".copy",     "_copy",    "-copy",
    ".backup",  "_backup",   "-backup",   ".new",       ".lock",     ".rpmsave", ".rpmnew",
    ".rpmorig", ".dpkg-old", ".dpkg-new", ".dpkg-dist", ".dpkg-bak", ".ucf-old", ".ucf-dist",
    ".gz",      ".bz2",      ".xz",       ".zst",       ".lz4",      ".zip",     ".txt",
};

// Removes a trailing date or number and its separator: "shadow-2025-01-31", ".netrc.1".
bool dropNumber(std::string_view& name) {
    const std::size_t end = name.find_last_not_of("0123456789-_.:T");
    if (end == std::string_view::npos || end + 2 >= name.size()) return false;
    if (std::string_view("-_.").find(name[end + 1]) == std::string_view::npos) return false;
    name = name.substr(0, end + 1);
    return true;
}

bool dropCopySuffix(std::string_view& name) {
    for (const std::string_view suffix : kCopySuffixes) {
        if (name.size() <= suffix.size() || !name.ends_with(suffix)) continue;
        name.remove_suffix(suffix.size());
        return true;
    }
    return dropNumber(name);
}

bool isSecretFile(std::string_view name) {
    const auto startsIt = [name](std::string_view start) { return name.starts_with(start); };
    const auto endsIt = [name](std::string_view end) {
        return name.size() > end.size() && name.ends_with(end);
    };
    if (std::ranges::find(kFiles, name) != std::end(kFiles)) return true;
    if (name.starts_with("ssh_host_") && name.ends_with("_key")) return true;
    return std::ranges::any_of(kEnds, endsIt) || std::ranges::any_of(kStarts, startsIt);
}

// Whether the file, or the original if it is a copy, is secret.
bool isSecretFileOrCopy(std::string_view name) {
    do {
        if (isSecretFile(name)) return true;
        // Swap files of editors: ".shadow.swp"
        if (name.starts_with('.') && isSecretFile(name.substr(1))) return true;
        if (name.starts_with('#') && name.ends_with('#') && name.size() > 2 &&
            isSecretFile(name.substr(1, name.size() - 2)))
            return true;
    } while (dropCopySuffix(name));
    return false;
}

bool passesThrough(std::string_view path, std::string_view directory) {
    for (std::size_t at = path.find(directory); at != std::string_view::npos;
         at = path.find(directory, at + 1)) {
        if (at > 0 && path[at - 1] == '/' && liesIn(path.substr(at), directory)) return true;
    }
    return false;
}

}  // namespace

bool isSecretByName(std::string_view path) {
    const std::string normalized = kest::lowerCase(normalizedPath(path));
    const std::string_view all = normalized;
    const auto liesThere = [all](std::string_view place) { return liesIn(all, place); };
    const auto leadsThrough = [all](std::string_view directory) { return passesThrough(all, directory); };
    if (std::ranges::any_of(kPlaces, liesThere) || std::ranges::any_of(kDirectories, leadsThrough))
        return true;
    if (liesIn(all, "/etc/pki") && all.find("/private/") != std::string_view::npos) return true;
    return isSecretFileOrCopy(all.substr(all.rfind('/') + 1));
}

}  // namespace toolkit::quorvis
