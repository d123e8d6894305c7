// The ids by which ARM CPUs identify their implementer and part, as /proc/cpuinfo shows them (register MIDR_EL1).
#pragma once

#include <string_view>

namespace toolkit::quorvah {

// The names of these ids, which are hexadecimal without "0x"; empty if the id is unknown.
std::string_view armImplementer(std::string_view implementer);
std::string_view armPart(std::string_view implementer, std::string_view part);

}  // namespace toolkit::quorvah
