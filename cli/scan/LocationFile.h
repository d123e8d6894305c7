// The location file /etc/zav/zav.ini, which names the toolkit of this machine.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace zavcli {

constexpr const char* kLocationFile = "/etc/zav/zav.ini";

struct LocationFile {
    bool readable = false;    // the file could be read
    bool registered = false;  // it lists the product
    std::string toolkit;      // the toolkit directory that it names, as bytes; empty if it names none
};

// Reads a location file by the same rules as the library, which matches its keys exactly.
LocationFile readLocationFile(const std::string& path, const std::string& product);

// Describes the lines of a location file that the library does not read as they were meant, each with its
// line number and the correction.
std::vector<std::string> locationFileFaults(std::istream& lines);

// Replaces runs of slashes in a path by a single slash.
void collapseSlashes(std::string& path);

}  // namespace zavcli
