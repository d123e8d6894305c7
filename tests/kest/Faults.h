// Makes system calls fail. The test executable is linked with --wrap for each supported function.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace kest::test {

// Makes the first `times` calls of `function` fail with `error`. "waitid" stands for the direct system call, "read"
// for reads of any kind, "open" for the opening of a placeholder for a standard stream.
class Fault {
  public:
    Fault(std::string function, int error, int times = 1);
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
    ~Fault();

    // Whether all of them have failed.
    static bool happened();
};

// Runs `action` before each process is cloned.
class BeforeClone {
  public:
    explicit BeforeClone(std::function<void()> action);
    BeforeClone(const BeforeClone&) = delete;
    BeforeClone& operator=(const BeforeClone&) = delete;
    ~BeforeClone();
};

// Makes one allocation of the process fail after `successes` successful ones.
class AllocationFault {
  public:
    explicit AllocationFault(int successes);
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
    ~AllocationFault();

    static bool happened();
};

}  // namespace kest::test
