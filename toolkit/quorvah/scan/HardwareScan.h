#pragma once

#include <stdexcept>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// The configuration file or the directory to scan cannot be used.
class BadInput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Gathers the groups that the configuration file names and writes the output file. Prints one line of progress per group
// to standard output and warnings to standard error. Throws BadInput, or std::system_error if the output file cannot be
// written; in both cases an existing output file is unchanged.
void runHardwareScan(Options options);

}  // namespace toolkit::quorvah
