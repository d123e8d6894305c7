#include "toolkit/quorvis/Sandbox.h"

#include <linux/audit.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <vector>

namespace toolkit::quorvis {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;  // of which no filter is made
#endif

constexpr std::uint32_t kRefused[] = {
    SYS_execve,
    SYS_execveat,
    SYS_socket,
    SYS_socketpair,
    SYS_connect,
    SYS_bind,
    SYS_listen,
    SYS_accept,
    SYS_accept4,
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_kill,
    SYS_tkill,
    SYS_mount,
    SYS_umount2,
    SYS_pivot_root,
    SYS_chroot,
    SYS_setns,
    SYS_unshare,
    SYS_bpf,
    SYS_perf_event_open,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_kexec_load,
    SYS_reboot,
    SYS_swapon,
    SYS_swapoff,
    SYS_add_key,
    SYS_request_key,
    SYS_keyctl,
    SYS_io_uring_setup,
    SYS_userfaultfd,
    SYS_open_by_handle_at,
};

constexpr sock_filter statement(std::uint16_t code, std::uint32_t value) {
    return {code, 0, 0, value};
}

// Goes on with the next but so many statements when the loaded value is this one, else with the next but `otherwise`.
constexpr sock_filter jumpIfEqual(std::uint32_t value, std::size_t then, std::size_t otherwise) {
    return {BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint8_t>(then), static_cast<std::uint8_t>(otherwise),
            value};
}

constexpr sock_filter load(std::size_t offset) {
    return statement(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
}

constexpr sock_filter answer(std::uint32_t action) {
    return statement(BPF_RET | BPF_K, action);
}

// Refuses the calls of the table, and all calls that another architecture numbers.
std::vector<sock_filter> makeFilter() {
    constexpr std::size_t kCalls = std::size(kRefused);
    std::vector<sock_filter> filter = {
        load(offsetof(seccomp_data, arch)),
        jumpIfEqual(kArchitecture, 0, kCalls + 2),
        load(offsetof(seccomp_data, nr)),
    };
    for (std::size_t i = 0; i < kCalls; ++i) filter.push_back(jumpIfEqual(kRefused[i], kCalls - i, 0));
    filter.push_back(answer(SECCOMP_RET_ALLOW));
    filter.push_back(answer(SECCOMP_RET_ERRNO | EPERM));
    return filter;
}

void refuseCalls() {
    if (kArchitecture == 0) return;
    std::vector<sock_filter> filter = makeFilter();
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0);
}

// Keeps none but the one that lets an administrator's scan read every file.
void dropCapabilities() {
    constexpr std::uint32_t kReadAnyFile = std::uint32_t{1} << CAP_DAC_READ_SEARCH;
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> held{};
    if (::syscall(SYS_capget, &header, held.data()) != 0) return;
    held[0] = {held[0].effective & kReadAnyFile, held[0].permitted & kReadAnyFile, 0};
    held[1] = {0, 0, 0};
    ::syscall(SYS_capset, &header, held.data());
}

void limit(__rlimit_resource resource, std::uint64_t most) {
    rlimit bounds{};
    if (::getrlimit(resource, &bounds) != 0) return;
    bounds.rlim_cur = std::min<rlim_t>(bounds.rlim_cur, most);
    ::setrlimit(resource, &bounds);
}

}  // namespace

void enterSandbox(const Settings& settings) {
    constexpr std::uint64_t kLargestOutput = std::uint64_t{4} << 30;
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(ZAV_SANITIZED)
    limit(RLIMIT_AS, settings.evaluation.memoryLimit);
#endif
    limit(RLIMIT_FSIZE, kLargestOutput);
    dropCapabilities();
    refuseCalls();
}

}  // namespace toolkit::quorvis
