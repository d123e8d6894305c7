// How descriptors come into being while a child is started.
#pragma once

#include "kest/Descriptor.h"

namespace kest {

// 0, or the number of the error; then neither end is open. Both are close-on-exec from birth and never were below 3.
int openPipe(Descriptor& readEnd, Descriptor& writeEnd);

}  // namespace kest
