#pragma once

namespace toolkit {

// What a scanning process needs besides reading files and starting threads.
struct CallNeeds {
    bool asksKernel = false;  // sockets for asking the kernel about the network
    bool children = false;    // processes that run the same program
};

// From now on denies this process the system calls that it does not need. False when the processor is not supported or the
// kernel does not accept the filter.
bool filterSystemCalls(const CallNeeds& needs);

}  // namespace toolkit
