// The texts that the kernel exports of the firmware's tables, and whether the tables themselves are visible.
#pragma once

#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/Smbios.h"

namespace toolkit::quorvah {

// The text in a file such as "chassis_vendor", as the firmware has it. A captured tree may lack the link in /sys/class,
// but have the directory that it leads to.
std::string dmiLine(const Root& root, const std::string& file);
// The same; empty for a placeholder.
std::string dmiText(const GatheringContext& context, const std::string& file);

// The identifier of the machine, in lower case also from kernels before 4.18; empty for a placeholder.
std::string dmiUuid(const GatheringContext& context);

// A text of a structure; empty for a placeholder.
std::string smbiosText(const GatheringContext& context, const SmbiosStructure& structure, std::size_t offset);

// The identifier of the machine in structure type 1. Its first three fields are little-endian since version 2.6 of the
// standard. Empty if the structure has none.
std::string smbiosUuid(const SmbiosStructure& system, const std::string& version);

// Whether the tables exist, though they may not be readable. Containers and machines without such firmware lack them.
bool hasSmbios(const Root& root);

}  // namespace toolkit::quorvah
