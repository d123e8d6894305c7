#pragma once

#include <string_view>

namespace toolkit {

// The machine that an ELF file is made for, as uname calls it; empty for what is none, or none of a machine
// that Linux commonly runs on. The first 20 bytes are enough.
std::string_view machineOfElf(std::string_view header);

}  // namespace toolkit
