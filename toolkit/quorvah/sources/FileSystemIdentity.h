#pragma once

#include <optional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvah {

// What the superblock of a file system, swap space or volume states. Missing values are empty.
struct FileSystemIdentity {
    std::string type;   // "ext4", "swap", "crypto_LUKS"
    std::string usage;  // "filesystem", "raid", "crypto", "other"
    std::string label;
    std::string uuid;
};

// Reads the superblocks of an open block device or of a file with its content. Nothing if there are none, or those of several
// kinds contradict each other.
std::optional<FileSystemIdentity> readFileSystemIdentity(const kest::Descriptor& device);

}  // namespace toolkit::quorvah
