#include "toolkit/quorvis/Sandbox.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "toolkit/quorvis/CallFilter.h"
#include "toolkit/quorvis/HelperThread.h"

namespace toolkit::quorvis {

namespace {

// Beyond what is in use already.
[[maybe_unused]] constexpr std::uint64_t kLeastRoom = std::uint64_t{64} << 20;
[[maybe_unused]] constexpr std::uint64_t kRoomOfThread = 2 * HelperThread::kStackSize;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Keeps those with which an administrator's scan reads every file, writes its output where it was told to and sees
// the programs of processes that have more capabilities than are left here.
bool dropCapabilities() {
    constexpr std::uint32_t kNeeded = (std::uint32_t{1} << CAP_DAC_READ_SEARCH) |
                                      (std::uint32_t{1} << CAP_DAC_OVERRIDE) |
                                      (std::uint32_t{1} << CAP_SYS_PTRACE);
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> held{};
    if (::syscall(SYS_capget, &header, held.data()) != 0) return false;
    held[0] = {held[0].effective & kNeeded, held[0].permitted & kNeeded, 0};
    held[1] = {0, 0, 0};
    return ::syscall(SYS_capset, &header, held.data()) == 0;
}

bool limit(__rlimit_resource resource, std::uint64_t most) {
    rlimit bounds{};
    if (::getrlimit(resource, &bounds) != 0) return false;
    bounds.rlim_max = std::min<rlim_t>(bounds.rlim_max, most);
    bounds.rlim_cur = std::min(bounds.rlim_cur, bounds.rlim_max);
    return ::setrlimit(resource, &bounds) == 0;
}

// The size of the address space, in bytes.
[[maybe_unused]] std::uint64_t memoryInUse() {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen("/proc/self/statm", "re"));
    unsigned long pages = 0;
    if (!file || std::fscanf(file.get(), "%lu", &pages) != 1) return 0;
    return std::uint64_t{pages} * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

bool limitMemory([[maybe_unused]] const Settings::Evaluation& settings) {
#ifdef ZAV_SANITIZED
    return true;  // a sanitizer reserves more than any limit
#else
    const std::uint64_t least = memoryInUse() + kLeastRoom + settings.jobs * kRoomOfThread;
    return limit(RLIMIT_AS, std::max(settings.memoryLimit, least));
#endif
}

}  // namespace

bool enterSandbox(const Settings& settings) {
    constexpr std::uint64_t kLargestOutput = std::uint64_t{4} << 30;
    bool whole = ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
    whole = limitMemory(settings.evaluation) && whole;
    std::signal(SIGXFSZ, SIG_IGN);  // a write that is too much fails
    whole = limit(RLIMIT_FSIZE, kLargestOutput) && whole;
    whole = limit(RLIMIT_CORE, 0) && whole;
    whole = dropCapabilities() && whole;
    return filterSystemCalls() && whole;
}

}  // namespace toolkit::quorvis
