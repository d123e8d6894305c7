#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace toolkit::quorvah {

struct PartitionEntry {
    int number = 0;
    std::string type;  // GUID, or the two hexadecimal digits of an MBR code
    std::string uuid;
    std::string name;  // UTF-8; GPT only
    bool primary = true;
    bool bootable = false;
};

struct PartitionTable {
    std::string type;  // "gpt" or "dos"; empty when there is none
    std::vector<PartitionEntry> entries;
};

// Gives bytes of a disk: as many as are asked for, or fewer when they cannot be read.
using ReadDisk = std::function<std::string(std::uint64_t offset, std::size_t size)>;

// The partition table of a disk whose blocks have this size in bytes.
PartitionTable readPartitionTable(const ReadDisk& read, std::uint64_t blockSize);

}  // namespace toolkit::quorvah
