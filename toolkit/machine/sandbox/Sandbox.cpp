#include "toolkit/machine/sandbox/Sandbox.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <memory>

namespace toolkit {

namespace {

constexpr std::uint64_t kMaxOutput = std::uint64_t{4} << 30;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool gainNoPrivileges() {
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 || ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1;
}

// Keeps the capabilities with which a scan by root reads all files, writes its output anywhere and sees the programs of
// processes that have more capabilities than this process keeps.
bool dropCapabilities() {
    constexpr std::uint32_t kNeeded = (std::uint32_t{1} << CAP_DAC_READ_SEARCH) |
                                      (std::uint32_t{1} << CAP_DAC_OVERRIDE) |
                                      (std::uint32_t{1} << CAP_SYS_PTRACE);
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> held{};
    if (::syscall(SYS_capget, &header, held.data()) != 0) return false;
    const bool any = ((held[0].effective | held[0].permitted) & ~kNeeded) != 0 || held[0].inheritable != 0 ||
                     (held[1].effective | held[1].permitted | held[1].inheritable) != 0;
    if (!any) return true;
    held[0] = {held[0].effective & kNeeded, held[0].permitted & kNeeded, 0};
    held[1] = {0, 0, 0};
    return ::syscall(SYS_capset, &header, held.data()) == 0;
}

bool limit(__rlimit_resource resource, std::uint64_t most) {
    rlimit bounds{};
    if (::getrlimit(resource, &bounds) != 0) return false;
    if (bounds.rlim_max <= most && bounds.rlim_cur <= most) return true;
    bounds.rlim_max = std::min<rlim_t>(bounds.rlim_max, most);
    bounds.rlim_cur = bounds.rlim_max;
    return ::setrlimit(resource, &bounds) == 0;
}

// The size of the address space in bytes.
[[maybe_unused]] std::uint64_t memoryInUse() {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen("/proc/self/statm", "re"));
    unsigned long pages = 0;
    if (!file || std::fscanf(file.get(), "%lu", &pages) != 1) return 0;
    return std::uint64_t{pages} * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

bool limitMemory([[maybe_unused]] const SandboxNeeds& needs) {
#ifdef ZAV_SANITIZED
    return true;  // a sanitizer reserves more than any limit
#else
    return limit(RLIMIT_AS, std::max(needs.memory, memoryInUse() + needs.leastMemory));
#endif
}

}  // namespace

std::string enterSandbox(const SandboxNeeds& needs) {
    std::string missing;
    const auto note = [&missing](bool done, const char* step) {
        if (!done) missing.append(missing.empty() ? "" : ", ").append(step);
    };
    note(gainNoPrivileges(), "ban on new privileges");
    note(limitMemory(needs), "memory limit");
    std::signal(SIGXFSZ, SIG_IGN);  // writing too much fails instead
    note(limit(RLIMIT_FSIZE, kMaxOutput), "limit of file sizes");
    note(limit(RLIMIT_CORE, 0), "ban on core dumps");
    note(dropCapabilities(), "dropping of capabilities");
    note(filterSystemCalls(needs.calls), "system call filter");
    return missing;
}

void boundMemory([[maybe_unused]] std::uint64_t bytes) {
#ifndef ZAV_SANITIZED
    rlimit bounds{};
    if (::getrlimit(RLIMIT_AS, &bounds) != 0) return;
    bounds.rlim_cur = std::min<rlim_t>(bounds.rlim_cur, bytes);
    ::setrlimit(RLIMIT_AS, &bounds);
#endif
}

}  // namespace toolkit
