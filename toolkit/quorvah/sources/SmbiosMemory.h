#pragma once

#include <cstdint>
#include <string_view>

#include "toolkit/machine/text/Checked.h"
#include "toolkit/quorvah/sources/Smbios.h"

namespace toolkit::quorvah {

// The memory of the machine (structure types 16 and 17). Unknown values are 0 or empty.
struct SmbiosMemory {
    Count maximumCapacity = 0;  // KiB
    Count devices = 0;          // sockets for modules
    Count installed = 0;        // KiB
    std::string_view errorCorrection;
};
SmbiosMemory readSmbiosMemory(const Smbios& smbios);

// The size of a module (structure type 17) in KiB; 0 for an empty socket or an unknown size.
std::uint64_t moduleSize(const SmbiosStructure& module);

}  // namespace toolkit::quorvah
