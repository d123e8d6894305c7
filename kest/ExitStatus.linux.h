#pragma once

#include <sys/types.h>

namespace kest {

// Returned by Process::wait() when the status is not available.
constexpr int unknownExitStatus = -1;

// Waits for a child of the calling process, reaps it, and returns its exit status. Does not write to thread-local
// memory unless the call fails.
int waitForChild(pid_t pid);

}  // namespace kest
