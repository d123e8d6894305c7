#include "toolkit/quorvah/sources/AtaIdentity.h"

#include <linux/hdreg.h>
#include <sys/ioctl.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kIdentitySize = 512;

// Words of the data, and their number.
constexpr std::size_t kSerial = 10;
constexpr std::size_t kSerialWords = 10;
constexpr std::size_t kFirmware = 23;
constexpr std::size_t kFirmwareWords = 4;
constexpr std::size_t kModel = 27;
constexpr std::size_t kModelWords = 20;
constexpr std::size_t kSataCapabilities = 76;
constexpr std::size_t kRotation = 217;

std::string textIn(std::string_view bytes) {
    return std::string(trimmed(bytes.substr(0, bytes.find('\0'))));
}

// The text in words, of which each has its first character in the upper half.
std::string textOf(std::string_view bytes, std::size_t word, std::size_t words) {
    std::string text(bytes.substr(2 * word, 2 * words));
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) std::swap(text[i], text[i + 1]);
    return textIn(text);
}

bool statesSata(std::uint64_t capabilities) {
    return capabilities != 0 && capabilities != 0xFFFF;
}

}  // namespace

Count rotationRate(std::uint64_t number) {
    constexpr std::uint64_t kSlowest = 0x0401;
    constexpr std::uint64_t kFastest = 0xFFFE;
    const bool known = number == 1 || (number >= kSlowest && number <= kFastest);
    return known ? Count(number) : std::nullopt;
}

std::optional<AtaIdentity> readAtaIdentity(std::string_view bytes) {
    if (bytes.size() < kIdentitySize) return std::nullopt;
    AtaIdentity identity;
    identity.model = textOf(bytes, kModel, kModelWords);
    identity.serial = textOf(bytes, kSerial, kSerialWords);
    identity.firmware = textOf(bytes, kFirmware, kFirmwareWords);
    identity.rotation = rotationRate(littleEndian(bytes, 2 * kRotation, 2));
    identity.serialAta = statesSata(littleEndian(bytes, 2 * kSataCapabilities, 2));
    return identity;
}

std::optional<AtaIdentity> ataIdentityOfPage(std::string_view page) {
    constexpr std::size_t kData = 60;
    if (page.size() < kData || page[1] != '\x89') return std::nullopt;
    return readAtaIdentity(page.substr(kData));
}

std::optional<AtaIdentity> ataIdentityOfName(std::string_view wwid) {
    constexpr std::string_view kAta = "t10.ATA     ";
    constexpr std::size_t kModelSize = 40;
    if (!wwid.starts_with(kAta)) return std::nullopt;
    wwid.remove_prefix(kAta.size());
    if (wwid.size() <= kModelSize) return std::nullopt;
    AtaIdentity identity;
    identity.model = trimmed(wwid.substr(0, kModelSize));
    identity.serial = trimmed(wwid.substr(kModelSize));
    return identity;
}

// The driver has put the texts into their natural order, and the words into that of this machine.
std::optional<AtaIdentity> askAtaIdentity(const kest::Descriptor& disk) {
    std::array<char, kIdentitySize> data{};
    if (!disk.isOpen() || ::ioctl(disk.number(), HDIO_GET_IDENTITY, data.data()) != 0) return std::nullopt;
    const std::string_view bytes(data.data(), data.size());
    const auto word = [bytes](std::size_t number) {
        return std::endian::native == std::endian::big ? bigEndian(bytes, 2 * number, 2)
                                                       : littleEndian(bytes, 2 * number, 2);
    };
    AtaIdentity identity;
    identity.model = textIn(bytes.substr(2 * kModel, 2 * kModelWords));
    identity.serial = textIn(bytes.substr(2 * kSerial, 2 * kSerialWords));
    identity.firmware = textIn(bytes.substr(2 * kFirmware, 2 * kFirmwareWords));
    identity.rotation = rotationRate(word(kRotation));
    identity.serialAta = statesSata(word(kSataCapabilities));
    return identity;
}

}  // namespace toolkit::quorvah
