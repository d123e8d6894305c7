#include "toolkit/machine/sandbox/CallFilter.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace toolkit {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#elif defined(__riscv) && __riscv_xlen == 64
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_RISCV64;
#elif defined(__powerpc64__) && defined(__LITTLE_ENDIAN__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_PPC64LE;
#elif defined(__powerpc64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_PPC64;
#elif defined(__s390x__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_S390X;
#else
constexpr std::uint32_t kArchitecture = 0;
#endif

constexpr std::uint32_t kOtherNumbering =
    0x40000000;  // x86-64 has a second set of numbers for all calls from here on

constexpr std::array kRefused = {
    // programs
    SYS_execve,
    SYS_execveat,
#ifdef SYS_fork
    SYS_fork,
    SYS_vfork,
#endif
    // the network, which io_uring could use in spite of this filter
    SYS_socketpair,
    SYS_connect,
    SYS_bind,
    SYS_listen,
#ifdef SYS_accept
    SYS_accept,
#endif
    SYS_accept4,
#ifdef SYS_socketcall
    SYS_socketcall,  // any of these, with arguments in memory
#endif
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
    SYS_ptrace,  // the leak checker inspects its own process with it
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
// Calls by which a process may send signals to itself only.
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

// The halves of an argument.
constexpr bool kLowestFirst = std::endian::native == std::endian::little;
constexpr std::size_t argument(std::size_t index) {
    return offsetof(seccomp_data, args) + 8 * index + (kLowestFirst ? 0 : 4);
}
constexpr std::size_t upperHalf(std::size_t index) {
    return offsetof(seccomp_data, args) + 8 * index + (kLowestFirst ? 4 : 0);
}

#ifdef __s390x__
constexpr std::size_t kCloneFlags = 1;
#else
constexpr std::size_t kCloneFlags = 0;
#endif

const sock_filter kRefuse = answer(SECCOMP_RET_ERRNO | EPERM);
const sock_filter kAllow = answer(SECCOMP_RET_ALLOW);

// Adds the decision for one value of a call's argument.
void add(std::vector<sock_filter>& steps, long call, std::initializer_list<sock_filter> body) {
    steps.push_back(
        jumpIf(BPF_JEQ, static_cast<std::uint32_t>(call), 0, static_cast<std::uint8_t>(body.size())));
    steps.insert(steps.end(), body);
}

// Allows threads, and processes if they are needed. The flags of clone3() are in memory, which a filter cannot read. The filter
// denies it with ENOSYS, and the C library then uses clone().
[[maybe_unused]] void addClone(std::vector<sock_filter>& steps, bool children) {
    add(steps, SYS_clone3, {answer(SECCOMP_RET_ERRNO | ENOSYS)});
    add(steps, SYS_clone,
        {load(argument(kCloneFlags)), jumpIf(BPF_JSET, kNewNamespaces, 1, 0),
         children ? kAllow : jumpIf(BPF_JSET, CLONE_THREAD, 1, 0), kRefuse, kAllow});
}

// Allows sockets for requests to the kernel. A message without a destination address reaches only the kernel.
void addSockets(std::vector<sock_filter>& steps, bool asksKernel) {
    if (!asksKernel) {
        add(steps, SYS_socket, {kRefuse});
        add(steps, SYS_sendto, {kRefuse});
        return;
    }
    constexpr std::uint32_t kKinds = 0xF;
    add(steps, SYS_socket,
        {load(argument(0)), jumpIf(BPF_JEQ, AF_NETLINK, 4, 0), jumpIf(BPF_JEQ, AF_INET, 0, 4),
         load(argument(1)), BPF_STMT(BPF_ALU | BPF_AND | BPF_K, kKinds), jumpIf(BPF_JEQ, SOCK_DGRAM, 0, 1),
         kAllow, kRefuse});
    add(steps, SYS_sendto,
        {load(argument(4)), jumpIf(BPF_JEQ, 0, 0, 3), load(upperHalf(4)), jumpIf(BPF_JEQ, 0, 0, 1), kAllow,
         kRefuse});
}

std::vector<sock_filter> program(const CallNeeds& needs) {
    std::vector<sock_filter> steps = {
        load(offsetof(seccomp_data, arch)), jumpIf(BPF_JEQ, kArchitecture, 1, 0),   kRefuse,
        load(offsetof(seccomp_data, nr)),   jumpIf(BPF_JGE, kOtherNumbering, 0, 1), kRefuse};
    for (const long call : kRefused) add(steps, call, {kRefuse});
    addSockets(steps, needs.asksKernel);
#ifndef ZAV_SANITIZED
    addClone(steps, needs.children);  // the leak checker starts a process
#endif
    const auto self = static_cast<std::uint32_t>(::getpid());
    for (const long call : kOnlyToItself)
        add(steps, call, {load(argument(0)), jumpIf(BPF_JEQ, self, 0, 1), kAllow, kRefuse});
    steps.push_back(kAllow);
    return steps;
}

}  // namespace

bool filterSystemCalls(const CallNeeds& needs) {
    if (kArchitecture == 0) return false;
    std::vector<sock_filter> steps = program(needs);
    const sock_fprog filter{static_cast<unsigned short>(steps.size()), steps.data()};
    return ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter, 0, 0) == 0 ||
           ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

}  // namespace toolkit
