#include "toolkit/quorvis/files/Disclosure.h"

#include <re2/re2.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvis {

namespace {

using Magic = std::string_view;
constexpr std::array<Magic, 14> kMagics = {
    Magic("PuTTY-User-Key-File-"),
    Magic("SSH PRIVATE KEY FILE FORMAT"),
    Magic("---- BEGIN SSH2 ENCRYPTED PRIVATE KEY"),
    Magic("(11:private-key"),
    Magic("(21:protected-private-key"),
    Magic("(20:shadowed-private-key"),
    Magic("Private-key-format: "),
    Magic("untrusted comment: minisign encrypted secret key"),
    Magic("untrusted comment: signify secret key"),
    Magic("== ed25519v1-secret"),
    Magic("\xFE\xED\xFE\xED", 4),  // Java key store
    Magic("\xCE\xCE\xCE\xCE", 4),
    Magic("\x03\xD9\xA2\x9A", 4),  // database of a password manager
    Magic("LUKS\xBA\xBE", 6),
};

// The body of the DER sequence at the start of the bytes; empty when there is none.
std::string_view sequenceBody(std::string_view bytes) {
    if (bytes.size() < 8 || bytes[0] != '\x30') return {};
    const auto length = static_cast<std::uint8_t>(bytes[1]);
    const std::size_t more = length > 0x80 ? length - 0x80U : 0;
    return more > 4 ? std::string_view() : bytes.substr(2 + more);
}

// Whether this is a private key (version 0 or 1, followed by a number, an algorithm or the key) or a PKCS #12 store (version
// 3, followed by its content). A certificate does not start with a number.
bool isBinaryKey(std::string_view start) {
    const std::string_view body = sequenceBody(start);
    if (!body.starts_with(Magic("\x02\x01", 2)) || body.size() < 4) return false;
    const char version = body[2];
    const char next = body[3];
    if (version == 3) return next == '\x30';
    return (version == 0 || version == 1) && (next == '\x30' || next == '\x02' || next == '\x04');
}

// Whether this is a Kerberos key table, whose first entry fits into the file.
bool isKeyTable(std::string_view start, std::size_t size) {
    if (start.size() < 8 || start[0] != '\x05' || (start[1] != 1 && start[1] != 2)) return false;
    const std::uint64_t entry = bigEndian(start, 2, 4);
    return entry > 0 && entry + 6 <= size;
}

bool isTicketCache(std::string_view start) {
    return start.size() > 4 && start[0] == '\x05' && (start[1] == 3 || start[1] == 4) && start[2] == 0;
}

// Whether this is an OpenPGP packet with a secret key: a tag, a length and the version.
bool isSecretPacket(std::string_view start) {
    if (start.size() < 8) return false;
    const auto tag = static_cast<std::uint8_t>(start[0]);
    std::size_t version = 0;
    if (tag >= 0x94 && tag <= 0x96) version = std::size_t{1} + (std::size_t{1} << (tag & 3U));
    if (tag == 0xC5)
        version = static_cast<std::uint8_t>(start[1]) < 0xC0   ? 2
                  : static_cast<std::uint8_t>(start[1]) < 0xE0 ? 3
                                                               : 6;
    return version > 0 && version < start.size() && start[version] >= 3 && start[version] <= 6;
}

// A single expression, so that a text is searched once. A PEM header counts only if a key follows it.
constexpr const char* kKeys =
    R"(-----BEGIN (?:[A-Za-z0-9]+ )*PRIVATE KEY(?: BLOCK)?-----(?:\s|\\+[nrt]|\\u000[ad])*[A-Za-z0-9+/=&])"
    R"(|LS0tLS1CRUdJTi(?:BSU0EgUFJJVkFURS|BQUklWQVRF|BFQyBQUklWQVRF|BPUEVOU1NIIFBSSVZBVEUg|BFTkNSWVBURUQgUFJJVkFURS|BEU0EgUFJJVkFURS|BQR1AgUFJJVkFURS))"
    R"(|b3BlbnNzaC1rZXktdjE)"
    R"(|\((?:11:|20:|21:)?(?:protected-|shadowed-)?private-key)"
    R"(|AGE-SECRET-KEY-1)"
    R"(|(?i:PrivateKey|PresharedKey)[ \t]*=[ \t]*[A-Za-z0-9+/]{43}=)"
    R"(|:\$(?:1|2[abxy]?|5|6|7|y|gy|md5|sha1|apr1|argon2(?:i|d|id)?)\$[^:\s]{20,})";

const RE2& keys() {
    static const RE2 expression(kKeys, RE2::Latin1);
    return expression;
}

}  // namespace

bool beginsAsKey(std::string_view start, std::size_t size) {
    const auto begins = [start](Magic magic) { return start.starts_with(magic); };
    return std::ranges::any_of(kMagics, begins) || isBinaryKey(start) || isKeyTable(start, size) ||
           isTicketCache(start) || isSecretPacket(start);
}

bool holdsKey(std::string_view text) {
    return RE2::PartialMatch({text.data(), text.size()}, keys());
}

}  // namespace toolkit::quorvis
