#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

// The usage of a file system. Sizes are in bytes.
struct FileSystemUsage {
    std::uint32_t deviceMajor = 0;
    std::uint32_t deviceMinor = 0;
    Count size;
    Count available;  // to unprivileged users
    Count blockSize;
    Count inodes;
    Count inodesFree;
    Count maxNameLength;
};

struct UsageAnswers {
    std::vector<std::optional<FileSystemUsage>> usages;  // one per path
    bool complete = true;                                // false if a file system did not answer in time
};

// Queries the file systems mounted at these paths. A file system that does not answer within `patience` is skipped.
// After three such file systems all others are skipped.
UsageAnswers askUsage(const std::vector<std::string>& paths,
                      std::chrono::milliseconds patience = std::chrono::seconds(1));

}  // namespace toolkit::quorvah
