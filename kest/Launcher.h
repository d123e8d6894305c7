#pragma once

#include <memory>

#include "kest/Descriptor.h"

namespace kest {

// What is to be started. Both lists end with a null pointer; the first argument is the path of the program.
struct Program {
    const char* const* arguments = nullptr;
    const char* const* environment = nullptr;
};

// A started program. Destroying it waits for its end.
class Process {
  public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    virtual ~Process() = default;

    // Waits for the end, and tells the exit status, 128 + n when signal n ended the program, -1 when the
    // system gave the status to somebody else. May be called again.
    virtual int wait() = 0;
};

struct StartedProgram {
    std::unique_ptr<Process> process;
    // The reading end of its standard output.
    Descriptor output;
};

// Starts a program with /dev/null as its standard input, a pipe as its standard output, the host's standard
// error, no other descriptor, an empty signal mask and every signal at its default. `process` is null when
// that failed. Throws std::bad_alloc.
StartedProgram startProgram(const Program& program);

}  // namespace kest
