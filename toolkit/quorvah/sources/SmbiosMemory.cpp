#include "toolkit/quorvah/sources/SmbiosMemory.h"

#include <array>
#include <set>

namespace toolkit::quorvah {

namespace {

constexpr unsigned kMemoryArray = 16;
constexpr unsigned kMemoryModule = 17;
constexpr unsigned kSystemMemory = 3;

constexpr std::array<std::string_view, 8> kErrorCorrections = {
    "", "Other", "", "None", "Parity", "Single-bit ECC", "Multi-bit ECC", "CRC"};

constexpr std::uint64_t kKibPerMib = 1024;

// The maximum capacity of an array in KiB.
std::uint64_t capacityOf(const SmbiosStructure& array) {
    constexpr std::uint64_t kSeeExtended = 0x80000000;
    const std::uint64_t capacity = array.number(0x07, 4);
    return capacity == kSeeExtended ? array.number(0x0F, 8) / 1024 : capacity;
}

// The handles of arrays for something else than main memory.
std::set<unsigned> otherArrays(const Smbios& smbios) {
    std::set<unsigned> handles;
    for (const SmbiosStructure* const array : smbios.ofType(kMemoryArray)) {
        if (array->byte(0x05) != kSystemMemory) handles.insert(array->handle);
    }
    return handles;
}

// Some firmware describes its own flash memory as a module.
bool isRom(const SmbiosStructure& module) {
    constexpr unsigned kRom = 0x08;
    constexpr unsigned kEprom = 0x0C;
    return module.byte(0x12) >= kRom && module.byte(0x12) <= kEprom;
}

}  // namespace

std::uint64_t moduleSize(const SmbiosStructure& module) {
    constexpr unsigned kUnknown = 0xFFFF;
    constexpr unsigned kSeeExtended = 0x7FFF;
    constexpr unsigned kInKib = 0x8000;
    const unsigned size = module.word(0x0C);
    if (size == kUnknown) return 0;
    if (size == kSeeExtended) return (module.number(0x1C, 4) & 0x7FFFFFFFU) * kKibPerMib;
    if ((size & kInKib) != 0) return size & ~kInKib;
    return size * kKibPerMib;
}

SmbiosMemory readSmbiosMemory(const Smbios& smbios) {
    SmbiosMemory memory;
    for (const SmbiosStructure* const array : smbios.ofType(kMemoryArray)) {
        if (array->byte(0x05) != kSystemMemory) continue;
        memory.maximumCapacity = sum(memory.maximumCapacity, capacityOf(*array));
        memory.devices = sum(memory.devices, array->word(0x0D));
        const unsigned correction = array->byte(0x06);
        if (correction < kErrorCorrections.size()) memory.errorCorrection = kErrorCorrections[correction];
    }
    const std::set<unsigned> others = otherArrays(smbios);
    for (const SmbiosStructure* const module : smbios.ofType(kMemoryModule)) {
        if (!isRom(*module) && !others.contains(module->word(0x04)))
            memory.installed = sum(memory.installed, moduleSize(*module));
    }
    return memory;
}

}  // namespace toolkit::quorvah
