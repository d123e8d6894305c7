#pragma once

#include <memory>

#include "kest/Descriptor.h"

namespace kest {

// What is to be started. Both lists end with a null pointer; the first argument is the path of the program.
struct Program {
    const char* const* arguments = nullptr;
    const char* const* environment = nullptr;
};

// A started program, for the thread that started it. Destroying it waits for its end.
class Process {
  public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    virtual ~Process() = default;

    // Waits for the end, and tells the exit status, 128 + n when signal n ended the program, -1 when the
    // status is not to be had. May be called again.
    virtual int wait() = 0;

    // A descriptor that has something to read once the program has ended, until wait() is called; -1 where there
    // is none.
    virtual int endDescriptor() const = 0;
};

struct StartedProgram {
    std::unique_ptr<Process> process;
    // The reading end of its standard output.
    Descriptor output;
    // Why it was not started: the number of the error.
    int error = 0;
};

// Starts a program with /dev/null as its standard input, a pipe as its standard output, the host's standard
// error, no other descriptor, an empty signal mask and every signal at its default. `process` is null when
// that failed. Throws std::bad_alloc.
StartedProgram startProgram(const Program& program);

}  // namespace kest
