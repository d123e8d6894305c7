#include "toolkit/quorvah/sources/Edid.h"

#include <cmath>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kBlock = 128;
constexpr std::string_view kHeader("\x00\xff\xff\xff\xff\xff\xff\x00", 8);
constexpr std::size_t kDescriptors = 54;
constexpr std::size_t kDescriptorSize = 18;
constexpr std::size_t kDescriptorCount = 4;

unsigned byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

// Three letters of five bits each; empty if one of them is no letter.
std::string makerOf(std::string_view block) {
    const auto code = static_cast<unsigned>(bigEndian(block, 8, 2));
    std::string letters;
    for (const unsigned shift : {10U, 5U, 0U}) {
        const unsigned letter = code >> shift & 0x1FU;
        if (letter < 1 || letter > 26) return {};
        letters += static_cast<char>('A' + letter - 1);
    }
    return letters;
}

void readDate(std::string_view block, Edid& edid) {
    constexpr unsigned kFirstYear = 1990;
    constexpr unsigned kLastWeek = 54;
    const unsigned week = byteAt(block, 16);
    if (week <= kLastWeek) edid.week = week;  // 255 marks the year of the model
    if (byteAt(block, 17) != 0) edid.year = kFirstYear + byteAt(block, 17);
}

// The text of a display descriptor ends with a line feed and is filled up with blanks.
std::string textOf(std::string_view descriptor) {
    const std::string_view text = descriptor.substr(5);
    return std::string(trimmed(text.substr(0, text.find_first_of(std::string_view("\n\0", 2)))));
}

// Twelve bits: the lower eight in one byte, the upper four in half of another one.
unsigned timingNumber(std::string_view timing, std::size_t low, std::size_t high, unsigned shift) {
    return byteAt(timing, low) | (byteAt(timing, high) >> shift & 0xFU) << 8U;
}

// The first timing is that of the preferred mode.
void readTiming(std::string_view timing, Edid& edid) {
    constexpr unsigned kInterlaced = 0x80;
    if (edid.horizontalPixels != 0) return;
    edid.horizontalPixels = timingNumber(timing, 2, 4, 4);
    edid.verticalPixels = timingNumber(timing, 5, 7, 4);
    if ((byteAt(timing, 17) & kInterlaced) != 0) edid.verticalPixels *= 2;
    const unsigned width = timingNumber(timing, 12, 14, 4);
    const unsigned height = timingNumber(timing, 13, 14, 0);
    if (width == 0 || height == 0) return;
    // Some displays state the aspect ratio here instead of the size.
    const bool ratio = (width == 16 && height == 9) || (width == 16 && height == 10) ||
                       (width == 160 && height == 90) || (width == 4 && height == 3);
    if (ratio) return;
    edid.width = width;
    edid.height = height;
}

void readDescriptor(std::string_view descriptor, Edid& edid) {
    constexpr unsigned kSerialNumber = 0xFF;
    constexpr unsigned kName = 0xFC;
    if (littleEndian(descriptor, 0, 2) != 0) return readTiming(descriptor, edid);
    if (byteAt(descriptor, 3) == kSerialNumber && edid.serialNumber.empty())
        edid.serialNumber = textOf(descriptor);
    if (byteAt(descriptor, 3) == kName && edid.name.empty()) edid.name = textOf(descriptor);
}

// A number that makers leave instead of a serial number is unknown.
std::string numericSerial(std::string_view block) {
    const std::uint64_t number = littleEndian(block, 12, 4);
    const bool placeholder = number == 0 || number == 0x01010101 || number == 0xFFFFFFFF;
    return placeholder ? std::string() : std::to_string(number);
}

}  // namespace

std::optional<Edid> readEdid(std::string_view bytes) {
    if (bytes.size() < kBlock || !bytes.starts_with(kHeader)) return std::nullopt;
    const std::string_view block = bytes.substr(0, kBlock);
    unsigned total = 0;
    for (const char byte : block) total += static_cast<unsigned char>(byte);
    if (total % 256 != 0) return std::nullopt;
    constexpr unsigned kDigital = 0x80;
    constexpr unsigned kMillimetres = 10;
    Edid edid;
    edid.maker = makerOf(block);
    edid.product = hexDigits(littleEndian(block, 10, 2), 4);
    readDate(block, edid);
    edid.version = std::to_string(byteAt(block, 18)) + "." + std::to_string(byteAt(block, 19));
    edid.digital = (byteAt(block, 20) & kDigital) != 0;
    // If one of the two is 0 they are no size.
    if (byteAt(block, 21) != 0 && byteAt(block, 22) != 0) {
        edid.width = byteAt(block, 21) * kMillimetres;
        edid.height = byteAt(block, 22) * kMillimetres;
    }
    for (std::size_t i = 0; i < kDescriptorCount; ++i)
        readDescriptor(block.substr(kDescriptors + i * kDescriptorSize, kDescriptorSize), edid);
    if (edid.serialNumber.empty()) edid.serialNumber = numericSerial(block);
    if (edid.width != 0)
        edid.diagonal = static_cast<unsigned>(std::lround(std::hypot(edid.width, edid.height)));
    return edid;
}

}  // namespace toolkit::quorvah
