// What several groups need to know about kernel and host. On the live machine it comes from system calls, for a tree
// from files. Missing values are empty.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct KernelInfo {
    std::string name;     // "Linux"
    std::string release;  // "6.1.0-18-amd64"
    std::string version;  // "#1 SMP PREEMPT_DYNAMIC Debian 6.1.76-1 (2024-02-01)"
    std::string machine;  // "x86_64"
};
KernelInfo readKernelInfo(const Root& root);
std::string kernelRelease(const Root& root);

std::string hostName(const Root& root);

// Times in seconds since 1970: the start of the system, and the time of observation. The latter is now for the live
// machine, or the time at which the files of the tree were captured.
std::optional<std::int64_t> bootTime(const Root& root);
std::optional<std::int64_t> observationTime(const Root& root);

}  // namespace toolkit::quorvah
