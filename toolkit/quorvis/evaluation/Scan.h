#pragma once

#include "toolkit/quorvis/settings/CommandLine.h"

namespace toolkit::quorvis {

// The scanner's exit status.
enum class Outcome : int {
    Done = 0,
    Failed = 1,
    BadInput = 2,
    BadSignatures = 3,
};

// Evaluates the signatures, writes both output files, and ends the process with Outcome::Done. Returns only in case of an
// error. Messages go to standard output; errors of the configuration or the root go to standard error. Throws
// std::system_error when an output file cannot be written.
Outcome scan(const Options& options);

// Prints what is wrong with the signatures file.
Outcome check(const Options& options);

}  // namespace toolkit::quorvis
