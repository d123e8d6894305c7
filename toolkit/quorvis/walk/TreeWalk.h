#pragma once

#include <chrono>
#include <span>
#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

class Machine;

// What to look for in the tree of files.
struct GlobRequest {
    std::string pattern;    // absolute, as the language defines it
    unsigned maxDepth = 0;  // levels below the pattern's fixed directories; 0 for the setting's
    std::string exclude;    // a pattern of paths that are passed over; empty for none
};

struct GlobHits {
    std::vector<std::string> paths;  // sorted by bytes; several paths may lead to one file
    bool incomplete = false;
    std::vector<Event> events;
};

// Finds what matches, for all requests in one walk that enters a directory once and only where a match can be.
// It ends at `end` at the latest, and with the time for the evaluation.
std::vector<GlobHits> walkTree(
    Machine& machine, std::span<const GlobRequest> requests,
    std::chrono::steady_clock::time_point end = std::chrono::steady_clock::time_point::max());

}  // namespace toolkit::quorvis
