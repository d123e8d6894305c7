#pragma once

#include <memory>

#include "kest/Descriptor.h"
#include "kest/Process.h"

namespace kest {

struct StartedProgram {
    std::unique_ptr<Process> process;
    // The reading end of its standard output.
    Descriptor output;
    // The error number when the program was not started.
    int error = 0;
};

// Starts a program with /dev/null as its standard input, a pipe as its standard output, the host's standard error, no
// other descriptor, an empty signal mask and default signal dispositions. `process` is null on failure. Throws
// std::bad_alloc.
StartedProgram startProgram(const Program& program);

}  // namespace kest
