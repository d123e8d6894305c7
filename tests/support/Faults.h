// Makes system calls fail. Use zav_test_faults() of Support.cmake, which wraps the functions. /etc/zav/zav.ini does
// not exist.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace zavtest {

// Makes calls of `function` fail with `error`: the nth from now on, counted from 1, and those after it until `times` have
// failed; or all for kEvery. "SYS_read" and "SYS_waitid" stand for these calls of syscall().
class Fault {
  public:
    static constexpr int kEvery = 0;

    Fault(const std::string& function, int error, int nth = 1, int times = 1);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

    // Whether `times` calls have failed.
    bool happened() const;
    // The number of failed calls, and the number of calls after the first of them.
    int failures() const;
    int callsBehind() const;
    // The path that the last failed call was about; empty if it has none.
    std::string path() const;
};

// Runs `action` before each process is cloned.
class BeforeClone {
  public:
    explicit BeforeClone(std::function<void()> action);
    BeforeClone(const BeforeClone&) = delete;
    BeforeClone& operator=(const BeforeClone&) = delete;
    ~BeforeClone();
};

// The number of bytes that read() has returned in this thread.
std::size_t bytesRead();

}  // namespace zavtest
