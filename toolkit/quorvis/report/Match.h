#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit::quorvis {

// Why a signature matched: one of the things that were found. What is empty is not written.
struct Evidence {
    std::string kind;    // "package"
    std::string source;  // the file that tells of it
    std::string name;
    std::string version;
};

// A signature that matched, with what it puts out.
struct Match {
    std::string_view guid;
    std::string name;
    std::string_view metadata;  // XML in ASCII
    std::vector<Evidence> evidence;
    std::vector<std::pair<std::string, std::string>> variables;  // name and value
};

}  // namespace toolkit::quorvis
