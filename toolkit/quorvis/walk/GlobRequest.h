#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// What to look for in the tree of files.
struct GlobRequest {
    std::string pattern;    // absolute, as the language defines it
    unsigned maxDepth = 0;  // levels below the pattern's fixed directories; 0 for the setting's
    std::string exclude;    // a pattern of paths that are skipped; empty for none
};

struct GlobHits {
    std::vector<std::string> paths;  // sorted by bytes; several paths may lead to one file
    bool incomplete = false;
    std::vector<Event> events;
};

}  // namespace toolkit::quorvis
