#pragma once

#include <optional>
#include <string>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// What feeds the machine. Batteries of mice and other devices do not count.
struct PowerSupply {
    std::string source;           // "AC" or "Battery"; empty if the machine does not report it
    std::optional<bool> battery;  // whether it has one
};
PowerSupply readPowerSupply(const Root& root);

}  // namespace toolkit::quorvah
