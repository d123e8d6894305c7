// The texts that the kernel exports of the firmware's tables, and whether the tables themselves are visible.
#pragma once

#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/Smbios.h"

namespace toolkit::quorvah {

// The text in a file such as "chassis_vendor"; empty for a placeholder.
std::string dmiText(const GatheringContext& context, const std::string& file);

// A text of a structure; empty for a placeholder.
std::string smbiosText(const GatheringContext& context, const SmbiosStructure& structure, std::size_t offset);

// Whether the tables exist, though they may not be readable. Containers and machines without such firmware lack them.
bool hasSmbios(const Root& root);

}  // namespace toolkit::quorvah
