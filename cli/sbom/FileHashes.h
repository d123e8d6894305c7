// Hashes of files of the scanned machine or tree.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "cli/sbom/Digest.h"

namespace zavcli {

// Why a directory, a device or the like has no hash.
inline constexpr const char* kNotRegular = "not a regular file";

// Reads files below a directory, which they cannot leave through links. The files may be anything: only regular files
// are read, up to 256 MiB each, and all together for at most two minutes. A file that other users may not read is not
// read, because its hash would disclose its content.
class FileHasher {
  public:
    // `root` is the scanned directory; empty for this machine. Throws Failure if it cannot be opened.
    explicit FileHasher(const std::string& root);
    ~FileHasher();
    FileHasher(const FileHasher&) = delete;
    FileHasher& operator=(const FileHasher&) = delete;

    // Nothing if the file is not read; `reason` then says why, in one word or a system error.
    std::optional<Hashes> hash(const std::string& path, std::string& reason) const;

  private:
    int root_;
    std::chrono::steady_clock::time_point end_;
};

}  // namespace zavcli
