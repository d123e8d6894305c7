#pragma once

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The memory in KiB that the firmware's map of addresses shows: the addresses from 0 without a gap, whatever they are used
// for, and the memory beyond 4 GiB. On a virtual board with a device tree, the memory of its nodes. Firmware may put the end of
// the memory anywhere else, so that this is the installed memory only if it is little more than what the kernel found, as on
// most virtual machines.
Count firmwareMemory(const Root& root);

}  // namespace toolkit::quorvah
