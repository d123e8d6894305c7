#pragma once

#include <stdexcept>
#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// The sandbox is incomplete, and the options do not allow that.
class SandboxIncomplete : public std::runtime_error {
  public:
    explicit SandboxIncomplete(const std::string& missing);
};

// Gives up all rights that gathering groups does not need, and limits the memory, until the process ends. Returns what
// could not be given up; empty if the sandbox is complete.
std::string enterGatheringSandbox();

// Adds a warning about what is missing from the sandbox. Throws SandboxIncomplete if the options do not allow that.
void reportIncompleteSandbox(GatheringContext& context, const std::string& missing);

}  // namespace toolkit::quorvah
