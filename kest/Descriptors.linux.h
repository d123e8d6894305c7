// How descriptors come into being while a child is started. All are close-on-exec from birth and lie above 2,
// in a host that has closed its own standard streams, too.
#pragma once

#include <sys/types.h>

#include "kest/Descriptor.h"

namespace kest {

// 0, or the number of the error; then neither end is open.
int openPipe(Descriptor& readEnd, Descriptor& writeEnd);

// A descriptor that names the process `pid` even when the number is given to another one. None when the
// system cannot give one.
Descriptor openPidDescriptor(pid_t pid);

// Whether descriptor 2 is the host's own.
bool hostHasStandardError();

}  // namespace kest
