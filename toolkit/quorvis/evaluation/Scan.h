#pragma once

#include "toolkit/quorvis/settings/CommandLine.h"

namespace toolkit::quorvis {

// How a run ended, as the scanner's exit status says it.
enum class Outcome : int {
    Done = 0,
    Failed = 1,
    BadInput = 2,
    BadSignatures = 3,
};

// Evaluates the signatures and writes both output files; then the process ends with Outcome::Done. Otherwise it returns
// why not. What it has to say goes to standard output, what is wrong with the configuration or the root to standard error.
// Throws std::system_error when an output file cannot be written.
Outcome scan(const Options& options);

// Tells on standard output what is wrong with the signatures file.
Outcome check(const Options& options);

}  // namespace toolkit::quorvis
