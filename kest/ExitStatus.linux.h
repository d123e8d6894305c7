#pragma once

#include <sys/types.h>

#include "kest/Descriptor.h"

namespace kest {

// What Process::wait() tells when the status is not to be had.
constexpr int unknownExitStatus = -1;

// Both wait for the end of a child of this process and take it away from the process table. A child that was
// already taken away is unknownExitStatus for the first; for the second, only where the kernel does not keep
// the status.
int waitForChild(pid_t pid);
int waitForChild(const Descriptor& pidDescriptor);

}  // namespace kest
