#include "tessa/DocumentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <string>

#include "kest/ErrorText.h"
#include "kest/Retry.h"
#include "kest/StandardStreams.h"
#include "tessa/ReadError.h"

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

[[noreturn]] void refuseSize(std::size_t maxSize) {
    throw Fault{"larger than " + std::to_string(maxSize) + " bytes"};
}

// Opening a socket fails with ENXIO, which is not a helpful message.
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
    return kest::Descriptor(kest::openAboveStandardStreams([path] {
        return kest::retryInterrupted(
            [path] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    }));
}

}  // namespace

DocumentFile::DocumentFile(const char* path, std::size_t maxSize)
    : maxSize_(maxSize), file_(openedFile(path)) {
    if (!file_.isOpen()) failToOpen(path, errno);
    struct stat status {};
    if (::fstat(file_.number(), &status) != 0) failToRead(errno);
    if (!S_ISREG(status.st_mode)) refuseKind(status.st_mode);
    if (static_cast<std::size_t>(status.st_size) > maxSize_) refuseSize(maxSize_);
}

int DocumentFile::read(void* buffer, int size) {
    const ssize_t count = kest::retryInterrupted(
        [&] { return ::read(file_.number(), buffer, static_cast<std::size_t>(size)); });
    if (count < 0) failToRead(errno);
    given_ += static_cast<std::size_t>(count);
    if (given_ > maxSize_) refuseSize(maxSize_);
    return static_cast<int>(count);
}

std::size_t DocumentFile::peek(char* buffer, std::size_t size) const {
    const ssize_t count = kest::retryInterrupted([&] { return ::pread(file_.number(), buffer, size, 0); });
    if (count < 0) failToRead(errno);
    return static_cast<std::size_t>(count);
}

void DocumentFile::rewind() {
    if (::lseek(file_.number(), 0, SEEK_SET) != 0) failToRead(errno);
    given_ = 0;
}

}  // namespace tessa
