#pragma once

#include "toolkit/quorvis/Settings.h"

namespace toolkit::quorvis {

// Gives up, for the rest of the process, what reading files does not need: starting programs, sockets, other processes,
// privileges, and more memory than the settings allow. A signatures file comes from somewhere else, and so do the files
// that it has looked into. What the kernel does not offer is left as it is; false when something was.
bool enterSandbox(const Settings& settings);

}  // namespace toolkit::quorvis
