#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace toolkit::quorvah {

// What a file system says of its size; sizes in bytes.
struct FileSystemUsage {
    std::uint32_t deviceMajor = 0;
    std::uint32_t deviceMinor = 0;
    std::uint64_t size = 0;
    std::uint64_t available = 0;  // to those without privilege
    std::uint64_t blockSize = 0;
    std::uint64_t inodes = 0;
    std::uint64_t inodesFree = 0;
    std::uint64_t longestName = 0;
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
