#pragma once

#include <chrono>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/evaluation/Evaluator.h"
#include "toolkit/quorvis/evaluation/ScanMessage.h"
#include "toolkit/quorvis/formats/XmlReader.h"
#include "toolkit/quorvis/settings/CommandLine.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// What to scan, and how.
struct ScanJob {
    const Options& options;
    const Settings& settings;
    const Root& root;
    const std::vector<PresetValue>& presets;
    const DocumentText& signatures;
    std::chrono::steady_clock::time_point start;  // of the time limit
};

// Where an evaluation starts. A second one continues where the first one ended early.
struct ScanAttempt {
    EvaluationStart start;
    bool again = false;          // whether it continues an earlier one
    bool walks = true;           // whether directories may be walked
    bool contentFilters = true;  // whether many regexes may be searched for at once
};

// The process that looks at the machine: enters the sandbox, reads the signatures and evaluates them. Its messages go to
// the output and the pipe.
[[noreturn]] void runWorker(const ScanJob& job, const ScanAttempt& attempt, int pipe, WorkerOutput& output);

}  // namespace toolkit::quorvis
