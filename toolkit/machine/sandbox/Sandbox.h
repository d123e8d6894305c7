#pragma once

#include <cstdint>
#include <string>

#include "toolkit/machine/sandbox/CallFilter.h"

namespace toolkit {

// What a scanning process needs.
struct SandboxNeeds {
    std::uint64_t memory = 0;       // bytes of address space
    std::uint64_t leastMemory = 0;  // at least this much more than is in use
    CallNeeds calls;
};

// Gives up, for the rest of the process, what scanning does not need: starting programs, network connections, access to other
// processes, privileges, and memory beyond the limit. The files that a scanner reads are untrusted. Steps that the kernel
// or the environment does not allow are skipped. Returns the names of the skipped steps, separated by commas, such as
// "system call filter"; empty when none was skipped.
std::string enterSandbox(const SandboxNeeds& needs);

// Limits the memory of this process until the next call.
void boundMemory(std::uint64_t bytes);

}  // namespace toolkit
