#include "cli/scan/Catalogue.h"

#include <fmt/format.h>

#include <filesystem>

#include "cli/scan/Toolkit.h"
#include "cli/system/Failure.h"

namespace zavcli {

std::string catalogueDirectory() {
    const std::filesystem::path directory = (commandPath().parent_path() / ZAV_CATALOGUE).lexically_normal();
    std::error_code error;
    if (std::filesystem::is_directory(directory, error)) return directory.string();
    throw Failure(kExitFailed,
                  fmt::format("there are no signatures in {}; name a file or directory of signatures",
                              directory.string()));
}

// Products may be anywhere, so some patterns begin with "/**". A machine may have many packages of a programming language. Some
// libraries have 45 MiB of constants. File servers have millions of files, and slow disks. The shipped signatures only look for products and versions, so they may see private
// directories as far as the user may.
std::vector<Setting> catalogueSettings() {
    return {{"FileSystem", "wholeTree", "true"},
            {"FileSystem", "maxDepth", "64"},
            {"FileSystem", "maxMatches", "200000"},
            {"FileSystem", "maxEntries", "50000000"},
            {"Evaluation", "timeLimit", "900"},
            {"FileSystem", "maxFileSize", "64M"},
            {"Secrets", "allow", "/"}};
}

}  // namespace zavcli
