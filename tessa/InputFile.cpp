#include "tessa/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <string>

#include "kest/ErrorText.h"
#include "kest/Retry.h"
#include "kest/StandardStreams.h"
#include "tessa/Fault.h"

namespace tessa {

namespace {

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISFIFO(mode)) return "a pipe";
    if (S_ISSOCK(mode)) return "a socket";
    return "a device";
}

[[noreturn]] void refuseKind(mode_t mode) {
    throw Fault{std::string("a regular file is expected, but this is ") + kindOf(mode)};
}

[[noreturn]] void refuseSize(std::size_t largest) {
    throw Fault{"larger than " + std::to_string(largest) + " bytes"};
}

// A socket cannot be opened at all, which says too little.
[[noreturn]] void failToOpen(const char* path, int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    struct stat status {};
    if (error == ENXIO && ::stat(path, &status) == 0) refuseKind(status.st_mode);
    throw Fault{"cannot be opened: " + kest::errorText(error)};
}

[[noreturn]] void failToRead(int error) {
    throw Fault{"cannot be read: " + kest::errorText(error)};
}

kest::Descriptor openedFile(const char* path) {
    return kest::Descriptor(kest::openedAbove([path] {
        return kest::retryInterrupted(
            [path] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    }));
}

}  // namespace

InputFile::InputFile(const char* path, std::size_t largest) : largest_(largest), file_(openedFile(path)) {
    if (!file_.isOpen()) failToOpen(path, errno);
    struct stat status {};
    if (::fstat(file_.number(), &status) != 0) failToRead(errno);
    if (!S_ISREG(status.st_mode)) refuseKind(status.st_mode);
    if (static_cast<std::size_t>(status.st_size) > largest_) refuseSize(largest_);
}

int InputFile::read(void* buffer, int size) {
    const ssize_t count = kest::retryInterrupted(
        [&] { return ::read(file_.number(), buffer, static_cast<std::size_t>(size)); });
    if (count < 0) failToRead(errno);
    given_ += static_cast<std::size_t>(count);
    if (given_ > largest_) refuseSize(largest_);
    return static_cast<int>(count);
}

std::size_t InputFile::peek(char* buffer, std::size_t size) const {
    const ssize_t count = kest::retryInterrupted([&] { return ::pread(file_.number(), buffer, size, 0); });
    if (count < 0) failToRead(errno);
    return static_cast<std::size_t>(count);
}

void InputFile::rewind() {
    if (::lseek(file_.number(), 0, SEEK_SET) != 0) failToRead(errno);
    given_ = 0;
}

}  // namespace tessa
