#pragma once

#include <cstdint>
#include <string_view>

#include "toolkit/machine/text/Checked.h"
#include "toolkit/quorvah/sources/Smbios.h"

namespace toolkit::quorvah {

// What the firmware tells of the memory as a whole (structure types 16 and 17). 0, unknown or empty when it does not.
struct SmbiosMemory {
    Count maximumCapacity = 0;  // KiB
    Count devices = 0;          // places for modules
    Count installed = 0;        // KiB
    std::string_view errorCorrection;
};
SmbiosMemory readSmbiosMemory(const Smbios& smbios);

// KiB of a module (structure type 17); 0 for an empty place or an unknown size.
std::uint64_t moduleSize(const SmbiosStructure& module);

}  // namespace toolkit::quorvah
