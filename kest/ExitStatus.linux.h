#pragma once

#include <sys/types.h>

namespace kest {

// What Process::wait() tells when the status is not to be had.
constexpr int unknownExitStatus = -1;

// Waits for the end of a child of the calling process and takes it away from the process table. Leaves thread-local
// memory alone.
int waitForChild(pid_t pid);

}  // namespace kest
