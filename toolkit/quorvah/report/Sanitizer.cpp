#include "toolkit/quorvah/report/Sanitizer.h"

#include <sys/random.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <system_error>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

struct SipState {
    std::uint64_t v0;
    std::uint64_t v1;
    std::uint64_t v2;
    std::uint64_t v3;

    void round() {
        v0 += v1;
        v1 = std::rotl(v1, 13) ^ v0;
        v0 = std::rotl(v0, 32);
        v2 += v3;
        v3 = std::rotl(v3, 16) ^ v2;
        v0 += v3;
        v3 = std::rotl(v3, 21) ^ v0;
        v2 += v1;
        v1 = std::rotl(v1, 17) ^ v2;
        v2 = std::rotl(v2, 32);
    }

    void absorb(std::uint64_t word) {
        v3 ^= word;
        round();
        round();
        v0 ^= word;
    }
};

// Names in paths that tell nothing of a machine or its users.
constexpr std::string_view kCommonNames[] = {
    "",           ".",     "..",     "bin",    "boot", "by-id", "by-label", "by-uuid", "cache",
    "containers", "dev",   "disk",   "docker", "efi",  "etc",   "home",     "lib",     "lib64",
    "local",      "log",   "mapper", "media",  "mnt",  "none",  "opt",      "overlay", "proc",
    "root",       "run",   "sbin",   "share",  "snap", "spool", "srv",      "swap",    "sys",
    "tmp",        "tmpfs", "user",   "usr",    "var"};

bool isPath(const schema::Field& field) {
    return field.privacy == schema::Privacy::Path;
}

bool isHashedWhole(const schema::Field& field) {
    return field.privacy != schema::Privacy::Public && !isPath(field);
}

bool isVolatile(const schema::Field& field) {
    return field.isVolatile;
}

template <typename Wanted, typename Change>
void forFields(GroupData& data, Wanted wanted, Change change) {
    const auto fields = data.group().fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!wanted(fields[i])) continue;
        for (Instance& instance : data.instances()) instance.replace(i, change(instance.values()[i]));
    }
}

}  // namespace

std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key, std::string_view text) {
    SipState state{key[0] ^ 0x736f6d6570736575U, key[1] ^ 0x646f72616e646f6dU, key[0] ^ 0x6c7967656e657261U,
                   key[1] ^ 0x7465646279746573U};
    const std::uint64_t length = text.size();
    for (; text.size() >= 8; text.remove_prefix(8)) state.absorb(littleEndian(text, 0, 8));
    state.absorb(littleEndian(text, 0, text.size()) | length << 56U);
    state.v2 ^= 0xFFU;
    for (int i = 0; i < 4; ++i) state.round();
    return state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
}

Sanitizer::Sanitizer() {
    const ssize_t count = ::getrandom(key_.data(), sizeof key_, 0);
    if (count != static_cast<ssize_t>(sizeof key_)) {
        throw std::system_error(errno, std::generic_category(), "getrandom");
    }
}

void Sanitizer::appendHash(std::string& text, std::string_view value) const {
    if (!value.empty()) text += hexDigits(sipHash(key_, value), 16);
}

std::string Sanitizer::hashed(std::string_view values) const {
    std::string hashes;
    while (!values.empty()) {
        appendHash(hashes, takeField(values, ';'));
        if (!values.empty()) hashes += ';';
    }
    return hashes;
}

std::string Sanitizer::hashedPaths(std::string_view paths) const {
    std::string hashes;
    while (!paths.empty()) {
        std::string_view path = takeField(paths, ';');
        // The kernel and udev name the devices there.
        constexpr std::string_view kDevices = "/dev/";
        if (path.starts_with(kDevices) && path.find('/', kDevices.size()) == std::string_view::npos) {
            hashes += path;
            path = {};
        }
        while (!path.empty()) {
            const std::string_view name = path.substr(0, path.find('/'));
            path.remove_prefix(name.size());
            const bool common = std::ranges::find(kCommonNames, name) != std::end(kCommonNames);
            if (common) {
                hashes += name;
            } else {
                appendHash(hashes, name);
            }
            if (path.empty()) break;
            hashes += '/';
            path.remove_prefix(1);
        }
        if (!paths.empty()) hashes += ';';
    }
    return hashes;
}

void Sanitizer::hide(GroupData& data) const {
    forFields(data, isHashedWhole, [this](std::string_view value) { return hashed(value); });
    forFields(data, isPath, [this](std::string_view value) { return hashedPaths(value); });
}

void dropVolatile(GroupData& data) {
    forFields(data, isVolatile, [](std::string_view) { return std::string_view(); });
}

}  // namespace toolkit::quorvah
