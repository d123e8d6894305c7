// System calls that fail on demand. Use zav_test_faults() of Support.cmake: it wraps the functions that fail.
// There is no /etc/zav/zav.ini.
#pragma once

#include <string>

namespace zavtest {

// While it lives, calls of `function` fail with `error`: the nth from here on, counted from 1, or every one
// for kEvery.
class Fault {
  public:
    static constexpr int kEvery = 0;

    Fault(const std::string& function, int error, int nth);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

    // How many calls have failed, and how many came behind the first of them.
    int failures() const;
    int callsBehind() const;
    // What the last call that failed was about: a path, or empty.
    std::string path() const;
};

}  // namespace zavtest
