#pragma once

#include "kest/Descriptor.h"

namespace kest {

// Opens a pipe whose ends are close-on-exec and have numbers above 2. Returns 0 or an error number; on error neither
// end is open.
int openPipe(Descriptor& readEnd, Descriptor& writeEnd);

}  // namespace kest
