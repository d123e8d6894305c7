// Makes system calls fail. Use zav_test_faults() of Support.cmake, which wraps the functions. /etc/zav/zav.ini does
// not exist.
#pragma once

#include <string>

namespace zavtest {

// Makes calls of `function` fail with `error`: the nth from now on, counted from 1, or all for kEvery.
class Fault {
  public:
    static constexpr int kEvery = 0;

    Fault(const std::string& function, int error, int nth);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

    // The number of failed calls, and the number of calls after the first of them.
    int failures() const;
    int callsBehind() const;
    // The path that the last failed call was about; empty if it has none.
    std::string path() const;
};

}  // namespace zavtest
