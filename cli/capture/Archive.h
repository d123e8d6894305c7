// Archives of recorded files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/capture/RecordedFiles.h"

namespace zavcli {

enum class Compression { None, Gzip, Zstd };

// By the end of the name: .tar, .tar.gz, .tgz, .tar.zst or .tzst. Nothing for another name.
std::optional<Compression> compressionOf(std::string_view fileName);

// The files as a tar archive. libarchive is loaded for it. Throws Failure.
std::string archiveOf(const RecordedFiles& files, Compression compression);

}  // namespace zavcli
