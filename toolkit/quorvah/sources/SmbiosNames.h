// The names that the standard gives to the numbers in SMBIOS structures. Empty for "Unknown" and for numbers that the
// standard does not define.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

std::string_view smbiosTypeName(unsigned type);
// Structure type 3. `type` is without the bit for a lock.
std::string_view chassisTypeName(unsigned type);
std::string_view chassisStateName(unsigned state);
std::string_view chassisSecurityName(unsigned status);
// Structure type 1.
std::string_view wakeUpName(unsigned type);
// Structure type 17.
std::string_view memoryFormName(unsigned form);
std::string_view memoryTypeName(unsigned type);
std::vector<std::string> memoryDetailNames(unsigned bits);
std::string_view memoryTechnologyName(unsigned technology);

}  // namespace toolkit::quorvah
