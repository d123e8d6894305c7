// What several groups ask of the system as a whole. On the live machine the system calls tell; below a
// directory the files of /proc and /etc do, and what they lack stays empty.
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

std::string hostName(const Root& root);

// Seconds since 1970: when the system was started, and when it was looked at. That is now, or when the files
// of the tree were taken from a running machine.
std::optional<std::int64_t> bootTime(const Root& root);
std::optional<std::int64_t> observationTime(const Root& root);

}  // namespace toolkit::quorvah
