#pragma once

#include <string>
#include <vector>

namespace toolkit::quorvah {

// The content of a configuration file.
struct Configuration {
    std::vector<std::string> groups;  // in the order of the file
    std::string error;                // the file, the line and the problem; empty if there is none
    std::vector<std::string> warnings;
};

// Reads the names of all elements <Group Name="..."/> at any place in the document and ignores everything else. The
// document must be well-formed and have no document type declaration. Throws std::bad_alloc.
Configuration readConfiguration(const std::string& path);

}  // namespace toolkit::quorvah
