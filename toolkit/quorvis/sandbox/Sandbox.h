#pragma once

#include <string>

#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Gives up, for the rest of the process, what evaluating signatures does not need, and more memory than the settings
// allow. Returns what could not be given up; empty when nothing is missing.
std::string enterSandbox(const Settings& settings);

}  // namespace toolkit::quorvis
