#pragma once

namespace toolkit {

// What a process that looks at a machine must be able to do besides reading files and starting threads.
struct CallNeeds {
    bool asksKernel = false;  // sockets by which the kernel tells of the network
    bool children = false;    // processes that run the same program
};

// From now on refuses this process the system calls that it has no use for. False where this kind of processor is not
// known, and when the kernel does not take the filter.
bool filterSystemCalls(const CallNeeds& needs);

}  // namespace toolkit
