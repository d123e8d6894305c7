// open and read that fail on demand. Use zav_test_file_calls() of Support.cmake.
#pragma once

#include <cstddef>

namespace zavtest {

enum class FileCall { kOpen, kRead };

// One call of this thread fails with an errno while this lives: the nth from here on, counted from 1.
class FailingFileCall {
  public:
    FailingFileCall(FileCall call, int nth, int error);
    ~FailingFileCall();
    FailingFileCall(const FailingFileCall&) = delete;
    FailingFileCall& operator=(const FailingFileCall&) = delete;

    // Whether it came to the call that fails.
    bool happened() const;
};

// What this thread has read until now.
std::size_t bytesRead();

}  // namespace zavtest
