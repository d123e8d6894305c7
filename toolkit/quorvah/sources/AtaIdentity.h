// What an ATA disk tells of itself (the data of IDENTIFY DEVICE). The kernel's own files cut the model to 16 and the
// firmware to 4 characters.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kest/Descriptor.h"
#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

// Unknown texts are empty.
struct AtaIdentity {
    std::string model;
    std::string serial;
    std::string firmware;
    Count rotation;  // per minute; 1 for a disk that does not rotate; missing if the disk does not tell
    bool serialAta = false;  // whether it states capabilities of SATA
};

// From the 512 bytes that the disk returns.
std::optional<AtaIdentity> readAtaIdentity(std::string_view bytes);

// From the SCSI page 89h, in which the kernel puts them.
std::optional<AtaIdentity> ataIdentityOfPage(std::string_view page);

// From the name of the kind "t10." that the kernel makes of an ATA disk: its model and serial number.
std::optional<AtaIdentity> ataIdentityOfName(std::string_view wwid);

// From the driver of an open disk, which has read it when it found the disk. Does not touch the disk.
std::optional<AtaIdentity> askAtaIdentity(const kest::Descriptor& disk);

// The rotation rate in a number of the kind that ATA and SCSI share: 0 is unknown, 1 is a disk that does not rotate.
Count rotationRate(std::uint64_t number);

}  // namespace toolkit::quorvah
