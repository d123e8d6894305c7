#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "toolkit/quorvis/evaluation/ScanWorker.h"
#include "toolkit/quorvis/report/Documents.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// What a scan found.
struct ScanResult {
    MatchElements matches;
    std::size_t matchCount = 0;
    std::size_t signatureCount = 0;
    std::vector<std::string> explanation;
    std::vector<std::string> problems;  // of the signatures file, when it is refused
    std::string failure;                // why there is no result; empty when there is one
};

// Evaluates the signatures in a child process, which is killed at the deadline whatever it is doing. If the child dies or
// hangs in one signature, another child continues with the next signature. Throws std::system_error when no process can
// be started.
ScanResult superviseScan(const ScanJob& job, EventList& events);

}  // namespace toolkit::quorvis
