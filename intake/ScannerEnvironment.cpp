#include "intake/ScannerEnvironment.h"

#include <string_view>

namespace zav {

namespace {

constexpr std::string_view kSearchPath = "DYLD_LIBRARY_PATH=";

}  // namespace

std::string scannerEnvironment(const char* const* entries, const std::string& directory) {
    std::string block;
    bool found = false;
    for (; entries != nullptr && *entries != nullptr; ++entries) {
        const std::string_view entry(*entries);
        if (entry.starts_with(kSearchPath)) {
            block.append(kSearchPath).append(directory).append(":").append(entry.substr(kSearchPath.size()));
            found = true;
        } else {
            block.append(entry);
        }
        block.push_back('\0');
    }
    // The first of the three closing NULs ends the added entry.
    if (!found) block.append(kSearchPath).append(directory);
    return block.append(3, '\0');
}

}  // namespace zav
