#pragma once

#include <cstdint>
#include <string>

#include "toolkit/machine/sandbox/CallFilter.h"

namespace toolkit {

// What a process needs while it looks at a machine.
struct SandboxNeeds {
    std::uint64_t memory = 0;       // bytes of address space
    std::uint64_t leastMemory = 0;  // those beyond what is in use that it has in any case
    CallNeeds calls;
};

// Gives up, for the rest of the process, what looking at a machine does not need: starting programs, connections, other
// processes, privileges, and more memory than that. What it reads comes from somewhere else, from strangers too. What
// the kernel or what stands around the process does not allow is left as it is. Returns what that was, with commas
// between: "system call filter"; empty when nothing is missing.
std::string enterSandbox(const SandboxNeeds& needs);

// Bounds the memory that this process may take until it says otherwise.
void boundMemory(std::uint64_t bytes);

}  // namespace toolkit
