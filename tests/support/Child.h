#pragma once

#include <sys/wait.h>
#include <unistd.h>

namespace zavtest {

// Whether `holds` is true in a forked child. False for a child that hangs, which is killed.
template <class Condition>
bool holdsInChild(Condition holds) {
    constexpr unsigned kSeconds = 60;
    const pid_t child = fork();
    if (child == 0) {
        alarm(kSeconds);
        _exit(holds() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

}  // namespace zavtest
