#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvah/sources/Smbios.h"

namespace toolkit::quorvah {

// An occupied socket (structure type 4). A number is 0 if the firmware does not state it.
struct SmbiosProcessor {
    std::string designation;
    std::string version;         // the name of the processor
    std::string upgrade;         // the kind of socket
    unsigned maxSpeed = 0;       // MHz
    unsigned externalClock = 0;  // MHz
    unsigned voltage = 0;        // mV
    unsigned cores = 0;
    unsigned enabledCores = 0;
    unsigned threads = 0;
    std::string id;  // 16 hexadecimal digits
    std::string serialNumber;
    std::string assetTag;
    std::string partNumber;
};

// The occupied sockets in the order of the table.
std::vector<SmbiosProcessor> readSmbiosProcessors(const Smbios& smbios);

}  // namespace toolkit::quorvah
