// Makes open and read fail. Use zav_test_file_calls() of Support.cmake.
#pragma once

#include <cstddef>

namespace zavtest {

enum class FileCall { kOpen, kRead };

// Makes one call of this thread fail with this error number: the nth from now on, counted from 1.
class FailingFileCall {
  public:
    FailingFileCall(FileCall call, int nth, int error);
    ~FailingFileCall();
    FailingFileCall(const FailingFileCall&) = delete;
    FailingFileCall& operator=(const FailingFileCall&) = delete;

    // Whether that call was reached.
    bool happened() const;
};

// The number of bytes that this thread has read.
std::size_t bytesRead();

}  // namespace zavtest
