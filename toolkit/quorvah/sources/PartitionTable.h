#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

struct PartitionEntry {
    int number = 0;
    std::string type;  // GUID, or two hexadecimal digits of an MBR
    std::string uuid;
    std::string name;  // UTF-8; GPT only
    bool primary = true;
    bool bootable = false;
    std::uint64_t blocks = 0;  // its size
};

// Whether this type in an MBR is a container of logical partitions.
bool isExtendedPartition(std::string_view type);

struct PartitionTable {
    std::string type;  // "gpt" or "dos"; empty if there is no table
    std::vector<PartitionEntry> entries;
};

// Reads bytes of a disk. Returns fewer bytes if they cannot be read.
using ReadDisk = std::function<std::string(std::uint64_t offset, std::size_t size)>;

// Reads the partition table of a disk with this block size in bytes.
PartitionTable readPartitionTable(const ReadDisk& read, std::uint64_t blockSize);

}  // namespace toolkit::quorvah
