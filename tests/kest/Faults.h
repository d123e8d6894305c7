// Makes system calls fail. The test executable is linked with --wrap for each function that is named here.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace kest::test {

// While it lives, calls of `function` fail with `error`: the first `times` of them. "waitid" is the waiting for a child
// by the bare system call, "read" the reading by whatever means, "open" that of a placeholder for a standard stream.
class Fault {
  public:
    Fault(std::string function, int error, int times = 1);
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
    ~Fault();

    // Whether each of them has come about.
    static bool happened();
};

// While it lives, `action` is taken each time before a process is cloned.
class BeforeClone {
  public:
    explicit BeforeClone(std::function<void()> action);
    BeforeClone(const BeforeClone&) = delete;
    BeforeClone& operator=(const BeforeClone&) = delete;
    ~BeforeClone();
};

// While it lives, the allocation after `successes` others fails, in whatever thread.
class AllocationFault {
  public:
    explicit AllocationFault(int successes);
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
    ~AllocationFault();

    static bool happened();
};

}  // namespace kest::test
