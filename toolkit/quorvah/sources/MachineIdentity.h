#pragma once

#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// What the computer says about itself. Unknown texts are empty.
struct MachineIdentity {
    std::string uuid;
    std::string manufacturer;
    std::string productName;
    std::string version;
    std::string serialNumber;
    std::string skuNumber;
    std::string family;
};
MachineIdentity readMachineIdentity(const GatheringContext& context);

}  // namespace toolkit::quorvah
