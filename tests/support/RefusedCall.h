#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <functional>

namespace zavtest {

// Runs `work` in a child in which a system call fails with `error`, as in some containers. The same holds for
// programs that it starts. Returns the result of `work`; -1 if it is not available.
inline int whereRefused(long call, int error, const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        sock_filter steps[] = {
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offsetof(seccomp_data, nr))),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 1),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        };
        const sock_fprog filter{4, steps};
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
            prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
            _exit(255);
        _exit(work());
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status) == 255 ? -1 : WEXITSTATUS(status);
}

}  // namespace zavtest
