#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

// What a file system says of its size; sizes in bytes.
struct FileSystemUsage {
    std::uint32_t deviceMajor = 0;
    std::uint32_t deviceMinor = 0;
    Count size;
    Count available;  // to those without privilege
    Count blockSize;
    Count inodes;
    Count inodesFree;
    Count maxNameLength;
};

struct UsageAnswers {
    std::vector<std::optional<FileSystemUsage>> usages;  // one for each path
    bool complete = true;                                // false when one did not answer in time
};

// Asks for the file systems mounted at these paths. One that does not answer within `patience` is given up,
// and so are those behind the third such one.
UsageAnswers askUsage(const std::vector<std::string>& paths,
                      std::chrono::milliseconds patience = std::chrono::seconds(1));

}  // namespace toolkit::quorvah
