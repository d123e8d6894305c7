#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/evaluation/ScanTail.h"
#include "toolkit/quorvis/formats/XmlReader.h"
#include "toolkit/quorvis/settings/CommandLine.h"
#include "toolkit/quorvis/settings/Configuration.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// What is to be scanned, and how.
struct ScanJob {
    const Options& options;
    const Settings& settings;
    const Root& root;
    const std::vector<PresetValue>& presets;
    const DocumentText& signatures;
    std::chrono::steady_clock::time_point start;  // of the time that a scan may take
};

// Where an evaluation begins that goes on for another one which ended early.
struct ScanAttempt {
    std::size_t first = 0;  // of the signatures
    bool walks = true;      // whether directories may be walked
    bool together = true;   // whether many expressions may be searched for at once
};

// The part of the process that looks at the machine: enters the sandbox, reads the signatures and evaluates them. All that
// comes of it goes through the pipe and the tail.
[[noreturn]] void workOn(const ScanJob& job, const ScanAttempt& attempt, int pipe, ScanTail& tail);

}  // namespace toolkit::quorvis
