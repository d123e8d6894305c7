#pragma once

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The bounds of the memory that is online, in KiB.
struct MemoryOnline {
    Count least;   // what the kernel manages or has reserved for itself
    Count most;    // the memory blocks that are online, some of which may be there only in part
    Count mapped;  // what firmwareMemory() says
};
MemoryOnline readMemoryOnline(const Root& root);

// The installed memory in KiB. It is what the firmware tells (`told`; 0 if unknown), unless more is online: then memory was
// added after the start of the machine. Without the firmware, or with added memory, it is what the map of addresses shows,
// if the kernel found all of it but a mebibyte; otherwise the roundest number between the bounds, because the sizes of
// modules are round and blocks count whole.
Count installedMemory(const MemoryOnline& online, Count told);

}  // namespace toolkit::quorvah
