#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>

#include "tests/support/Descriptors.h"

namespace zavtest {

// Checks at its end that as many descriptors are open as at its beginning and that there is no child.
class NothingLeft {
  public:
    NothingLeft() = default;
    ~NothingLeft() {
        EXPECT_EQ(openDescriptors(), descriptors_);
        errno = 0;
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG | __WALL), -1);
        EXPECT_EQ(errno, ECHILD);
    }
    NothingLeft(const NothingLeft&) = delete;
    NothingLeft& operator=(const NothingLeft&) = delete;

  private:
    std::size_t descriptors_ = openDescriptors();
};

}  // namespace zavtest
