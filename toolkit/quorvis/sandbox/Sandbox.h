#pragma once

#include <string>

#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Permanently restricts the process to what the evaluation of signatures needs, and its memory to the limit of the
// settings. Returns the restrictions that failed; empty if the sandbox is complete.
std::string enterSandbox(const Settings& settings);

}  // namespace toolkit::quorvis
