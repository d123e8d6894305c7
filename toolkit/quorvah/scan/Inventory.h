#pragma once

#include <stdexcept>

#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {

// The configuration file or the directory to scan cannot be used.
class BadInput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Gathers what the configuration file asks for and writes the output file, with a line of progress per group
// on standard output and warnings on standard error. Throws BadInput, and std::system_error when the output
// file cannot be written; then there is none.
void takeInventory(Options options);

}  // namespace toolkit::quorvah
