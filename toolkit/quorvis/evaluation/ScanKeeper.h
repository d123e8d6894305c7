#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "toolkit/quorvis/evaluation/ScanWorker.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// What came of a scan.
struct Findings {
    std::string matches;  // their elements for the output file
    std::size_t matchCount = 0;
    std::size_t signatureCount = 0;
    std::vector<std::string> explanation;
    std::vector<std::string> problems;  // of the signatures file, when it was refused
    std::string failure;                // why there is no result at all; usually empty
};

// Evaluates the signatures in a child process, which is killed when the time is over, whatever it hangs in. Where it dies
// or hangs in one signature, another child goes on with the next one. Throws std::system_error when no process can be
// started.
Findings keepScan(const ScanJob& job, EventList& events);

}  // namespace toolkit::quorvis
