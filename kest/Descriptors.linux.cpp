#include "kest/Descriptors.linux.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <mutex>

namespace kest {

namespace {

// A descriptor is born with the lowest number that is free. Where the host has closed its standard streams
// that is 0, 1 or 2 until it has been moved up; meanwhile no other thread may take it for the host's standard
// error.
std::mutex lowNumbers;

int moveUp(Descriptor& descriptor) {
    if (descriptor.number() > STDERR_FILENO) return 0;
    Descriptor higher(fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!higher.isOpen()) return errno;
    descriptor = std::move(higher);
    return 0;
}

}  // namespace

int openPipe(Descriptor& readEnd, Descriptor& writeEnd) {
    const std::lock_guard<std::mutex> guard(lowNumbers);
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    if (const int error = moveUp(reading)) return error;
    if (const int error = moveUp(writing)) return error;
    readEnd = std::move(reading);
    writeEnd = std::move(writing);
    return 0;
}

Descriptor openPidDescriptor(pid_t pid) {
    const std::lock_guard<std::mutex> guard(lowNumbers);
    Descriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (!descriptor.isOpen() || moveUp(descriptor) != 0) return {};
    return descriptor;
}

bool hostHasStandardError() {
    const std::lock_guard<std::mutex> guard(lowNumbers);
    return fcntl(STDERR_FILENO, F_GETFD) != -1;
}

}  // namespace kest
