#pragma once

#include <string_view>

namespace toolkit {

// The machine that an ELF file is built for, by the name that uname gives it. Empty when `header` is not the beginning of an
// ELF file or the machine is not one that Linux commonly runs on. The first 20 bytes are enough.
std::string_view machineOfElf(std::string_view header);

}  // namespace toolkit
