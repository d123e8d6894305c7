#pragma once

namespace kest {

// A program to start. Both lists end with a null pointer. The first argument is the path of the program.
struct Program {
    const char* const* arguments = nullptr;
    const char* const* environment = nullptr;
};

// A started program, for use by the thread that started it. The destructor waits for the program's end.
class Process {
  public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    virtual ~Process() = default;

    // Waits for the program and returns its exit status: 128 + n when signal n ended it, -1 when the status is not
    // available. May be called again.
    virtual int wait() = 0;

    // A descriptor that becomes readable when the program ends and is valid until wait(); -1 if there is none.
    virtual int endDescriptor() const = 0;
};

}  // namespace kest
