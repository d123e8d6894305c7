#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvah/sources/Smbios.h"

namespace toolkit::quorvah {

// A socket with a processor in it (structure type 4). A number is 0 when the firmware does not tell.
struct SmbiosProcessor {
    std::string designation;
    std::string upgrade;         // the kind of socket, as text
    unsigned maxSpeed = 0;       // MHz
    unsigned externalClock = 0;  // MHz
    unsigned voltage = 0;        // mV
    unsigned cores = 0;
    unsigned enabledCores = 0;
    std::string id;  // 16 hexadecimal digits
    std::string serialNumber;
    std::string assetTag;
    std::string partNumber;
};

// In the order of the table, without the empty sockets.
std::vector<SmbiosProcessor> readSmbiosProcessors(const Smbios& smbios);

}  // namespace toolkit::quorvah
