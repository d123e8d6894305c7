#include "toolkit/quorvis/CallFilter.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace toolkit::quorvis {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;
#endif

constexpr std::uint32_t kOtherNumbering = 0x40000000;  // x86-64 has each call a second time from here

constexpr std::array kRefused = {
    // programs
    SYS_execve,
    SYS_execveat,
#ifdef SYS_fork
    SYS_fork,
    SYS_vfork,
#endif
    // the network; io_uring reaches it past this filter
    SYS_socket,
    SYS_socketpair,
    SYS_connect,
    SYS_bind,
    SYS_listen,
    SYS_accept,
    SYS_accept4,
    SYS_sendto,
    SYS_sendmsg,
    SYS_sendmmsg,
    SYS_io_uring_setup,
    // other processes
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_pidfd_getfd,
    SYS_pidfd_send_signal,
    SYS_tkill,
    SYS_rt_sigqueueinfo,
    SYS_rt_tgsigqueueinfo,
#ifndef ZAV_SANITIZED
    SYS_ptrace,  // with it the leak checker looks into its own process
#endif
    SYS_setns,
    SYS_unshare,
    // the machine
    SYS_mount,
    SYS_umount2,
    SYS_pivot_root,
    SYS_chroot,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_kexec_load,
    SYS_reboot,
    SYS_swapon,
    SYS_swapoff,
    SYS_bpf,
    SYS_perf_event_open,
    SYS_userfaultfd,
    SYS_add_key,
    SYS_request_key,
    SYS_keyctl,
    SYS_acct,
    SYS_settimeofday,
    SYS_clock_settime,
    SYS_adjtimex,
    SYS_sethostname,
    SYS_setdomainname,
    SYS_open_by_handle_at,
};
// Signals that a process may send to itself.
constexpr std::array kOnlyToItself = {SYS_kill, SYS_tgkill};

sock_filter load(std::size_t offset) {
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
}

sock_filter answer(std::uint32_t action) {
    return BPF_STMT(BPF_RET | BPF_K, action);
}

sock_filter jumpIf(std::uint16_t comparison, std::uint32_t value, std::uint8_t yes, std::uint8_t no) {
    return BPF_JUMP(static_cast<std::uint16_t>(BPF_JMP | comparison | BPF_K), value, yes, no);
}

constexpr std::uint32_t kNewNamespaces =
    CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;

// The lower half of the first argument, on processors that have it first.
constexpr std::size_t kFirstArgument = offsetof(seccomp_data, args);

// Threads may be started and nothing else. What clone3() is to start stands in memory, where a filter cannot look: who
// tries it takes clone() where the kernel does not have it.
[[maybe_unused]] void allowThreadsOnly(std::vector<sock_filter>& steps) {
    steps.push_back(jumpIf(BPF_JEQ, SYS_clone3, 0, 1));
    steps.push_back(answer(SECCOMP_RET_ERRNO | ENOSYS));
    steps.push_back(jumpIf(BPF_JEQ, SYS_clone, 0, 5));
    steps.push_back(load(kFirstArgument));
    steps.push_back(jumpIf(BPF_JSET, kNewNamespaces, 1, 0));
    steps.push_back(jumpIf(BPF_JSET, CLONE_THREAD, 1, 0));
    steps.push_back(answer(SECCOMP_RET_ERRNO | EPERM));
    steps.push_back(answer(SECCOMP_RET_ALLOW));
}

std::vector<sock_filter> program() {
    const sock_filter refuse = answer(SECCOMP_RET_ERRNO | EPERM);
    const sock_filter allow = answer(SECCOMP_RET_ALLOW);
    std::vector<sock_filter> steps = {
        load(offsetof(seccomp_data, arch)), jumpIf(BPF_JEQ, kArchitecture, 1, 0),   refuse,
        load(offsetof(seccomp_data, nr)),   jumpIf(BPF_JGE, kOtherNumbering, 0, 1), refuse};
    for (const long call : kRefused) {
        steps.push_back(jumpIf(BPF_JEQ, static_cast<std::uint32_t>(call), 0, 1));
        steps.push_back(refuse);
    }
#ifndef ZAV_SANITIZED
    allowThreadsOnly(steps);  // the leak checker starts a process
#endif
    for (const long call : kOnlyToItself) {
        steps.push_back(jumpIf(BPF_JEQ, static_cast<std::uint32_t>(call), 0, 4));
        steps.push_back(load(kFirstArgument));
        steps.push_back(jumpIf(BPF_JEQ, static_cast<std::uint32_t>(::getpid()), 0, 1));
        steps.push_back(allow);
        steps.push_back(refuse);
    }
    steps.push_back(allow);
    return steps;
}

}  // namespace

bool filterSystemCalls() {
    if (kArchitecture == 0) return false;
    std::vector<sock_filter> steps = program();
    const sock_fprog filter{static_cast<unsigned short>(steps.size()), steps.data()};
    return ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter, 0, 0) == 0;
}

}  // namespace toolkit::quorvis
