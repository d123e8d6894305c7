#include "tests/support/FailingFileCall.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

// The names that the linker's option --wrap uses. The mode is passed on whether or not there is one.
extern "C" {
int zavtestOpenFile(const char* path, int flags, mode_t mode) __asm__("__wrap_open");
int zavtestOpenFileReally(const char* path, int flags, mode_t mode) __asm__("__real_open");
ssize_t zavtestRead(int descriptor, void* buffer, std::size_t size) __asm__("__wrap_read");
ssize_t zavtestReadReally(int descriptor, void* buffer, std::size_t size) __asm__("__real_read");
}

namespace {

thread_local zavtest::FileCall chosen = zavtest::FileCall::kOpen;
thread_local int untilFailure = 0;
thread_local int chosenError = 0;
thread_local std::size_t readUntilNow = 0;

bool fails(zavtest::FileCall call) {
    if (call != chosen || untilFailure == 0 || --untilFailure != 0) return false;
    errno = chosenError;
    return true;
}

}  // namespace

int zavtestOpenFile(const char* path, int flags, mode_t mode) {
    return fails(zavtest::FileCall::kOpen) ? -1 : zavtestOpenFileReally(path, flags, mode);
}

ssize_t zavtestRead(int descriptor, void* buffer, std::size_t size) {
    if (fails(zavtest::FileCall::kRead)) return -1;
    const ssize_t count = zavtestReadReally(descriptor, buffer, size);
    if (count > 0) readUntilNow += static_cast<std::size_t>(count);
    return count;
}

namespace zavtest {

FailingFileCall::FailingFileCall(FileCall call, int nth, int error) {
    chosen = call;
    chosenError = error;
    untilFailure = nth;
}

FailingFileCall::~FailingFileCall() {
    untilFailure = 0;
}

std::size_t bytesRead() {
    return readUntilNow;
}

bool FailingFileCall::happened() const {
    return untilFailure == 0;
}

}  // namespace zavtest
