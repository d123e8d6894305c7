// Makes system calls fail. The test executable is linked with --wrap for each function that is named here.
#pragma once

#include <cstddef>
#include <string>

namespace kest::test {

// While it lives, calls of `function` fail with `error`: the first `times` of them. Two names mean one kind
// of call only: "fcntl" the copying of a descriptor, "ioctl" with EAGAIN the call that succeeds but tells
// nothing. "pidfd_open" is known by this name.
class Fault {
  public:
    Fault(std::string function, int error, int times = 1);
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
    ~Fault();

    // Whether each of them has come about.
    static bool happened();
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
