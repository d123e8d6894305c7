#include "toolkit/quorvah/sources/SmbiosProcessor.h"

#include <array>

#include "toolkit/machine/text/HexDigits.h"

namespace toolkit::quorvah {

namespace {

constexpr unsigned kProcessor = 4;
constexpr unsigned kCentralProcessor = 3;
constexpr unsigned kPopulated = 0x40;

// The kinds of sockets, by their number in the standard.
constexpr std::array<const char*, 0x50> kUpgrades = {
    "",
    "Other",
    "",
    "Daughter Board",
    "ZIF Socket",
    "Replaceable Piggy Back",
    "",
    "LIF Socket",
    "Slot 1",
    "Slot 2",
    "370-pin socket",
    "Slot A",
    "Slot M",
    "Socket 423",
    "Socket A (Socket 462)",
    "Socket 478",
    "Socket 754",
    "Socket 940",
    "Socket 939",
    "Socket mPGA604",
    "Socket LGA771",
    "Socket LGA775",
    "Socket S1",
    "Socket AM2",
    "Socket F (1207)",
    "Socket LGA1366",
    "Socket G34",
    "Socket AM3",
    "Socket C32",
    "Socket LGA1156",
    "Socket LGA1567",
    "Socket PGA988A",
    "Socket BGA1288",
    "Socket rPGA988B",
    "Socket BGA1023",
    "Socket BGA1224",
    "Socket LGA1155",
    "Socket LGA1356",
    "Socket LGA2011",
    "Socket FS1",
    "Socket FS2",
    "Socket FM1",
    "Socket FM2",
    "Socket LGA2011-3",
    "Socket LGA1356-3",
    "Socket LGA1150",
    "Socket BGA1168",
    "Socket BGA1234",
    "Socket BGA1364",
    "Socket AM4",
    "Socket LGA1151",
    "Socket BGA1356",
    "Socket BGA1440",
    "Socket BGA1515",
    "Socket LGA3647-1",
    "Socket SP3",
    "Socket SP3r2",
    "Socket LGA2066",
    "Socket BGA1392",
    "Socket BGA1510",
    "Socket BGA1528",
    "Socket LGA4189",
    "Socket LGA1200",
    "Socket LGA4677",
    "Socket LGA1700",
    "Socket BGA1744",
    "Socket BGA1781",
    "Socket BGA1211",
    "Socket BGA2422",
    "Socket LGA1211",
    "Socket LGA2422",
    "Socket LGA5773",
    "Socket BGA5773",
    "Socket AM5",
    "Socket SP5",
    "Socket SP6",
    "Socket BGA883",
    "Socket BGA1190",
    "Socket BGA4129",
    "Socket LGA4710",
};

// The voltage in mV. If the highest bit of the byte is set, the rest is in tenths of a volt. Otherwise each bit is a
// voltage that the socket supports, and only a single bit states the voltage of the processor.
unsigned voltageOf(unsigned byte) {
    if ((byte & 0x80U) != 0) return (byte & 0x7FU) * 100;
    switch (byte) {
        case 1:
            return 5000;
        case 2:
            return 3300;
        case 4:
            return 2900;
        default:
            return 0;
    }
}

// A count in a byte. 255 means that the count is in a word, which older tables lack.
unsigned countOf(const SmbiosStructure& structure, std::size_t byteAt, std::size_t wordAt) {
    const unsigned count = structure.byte(byteAt);
    return count == 0xFF && structure.has(wordAt, 2) ? structure.word(wordAt) : count;
}

SmbiosProcessor decode(const SmbiosStructure& structure) {
    SmbiosProcessor processor;
    processor.designation = structure.string(0x04);
    processor.version = structure.string(0x10);
    const unsigned upgrade = structure.byte(0x19);
    if (upgrade < kUpgrades.size()) processor.upgrade = kUpgrades[upgrade];
    processor.maxSpeed = structure.word(0x14);
    processor.externalClock = structure.word(0x12);
    processor.voltage = voltageOf(structure.byte(0x11));
    processor.cores = countOf(structure, 0x23, 0x2A);
    processor.enabledCores = countOf(structure, 0x24, 0x2C);
    processor.threads = countOf(structure, 0x25, 0x2E);
    const std::uint64_t id = structure.number(0x08, 8);
    if (id != 0) processor.id = hexDigits(id, 16);
    processor.serialNumber = structure.string(0x20);
    processor.assetTag = structure.string(0x21);
    processor.partNumber = structure.string(0x22);
    return processor;
}

}  // namespace

std::vector<SmbiosProcessor> readSmbiosProcessors(const Smbios& smbios) {
    std::vector<SmbiosProcessor> processors;
    for (const SmbiosStructure* const structure : smbios.ofType(kProcessor)) {
        const bool empty = (structure->byte(0x18) & kPopulated) == 0;
        if (empty || structure->byte(0x05) != kCentralProcessor) continue;
        processors.push_back(decode(*structure));
    }
    return processors;
}

}  // namespace toolkit::quorvah
