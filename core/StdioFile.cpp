#include "core/StdioFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "kest/StandardStreams.h"

namespace zav {

namespace {

// Replaces a stream on a descriptor below 3, which occurs when the host closes a standard stream during the call.
StdioFile moveAboveStandardStreams(StdioFile file, const char* mode) {
    if (file == nullptr || ::fileno(file.get()) > STDERR_FILENO) return file;
    const int higher = ::fcntl(::fileno(file.get()), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    file.reset(higher >= 0 ? ::fdopen(higher, mode) : nullptr);
    if (file == nullptr && higher >= 0) ::close(higher);
    return file;
}

}  // namespace

StdioFile openFileOrNull(const char* path, const char* mode) {
    const kest::ScopedStreamReservation taken;
    if (taken.error() != 0) return nullptr;
    return moveAboveStandardStreams(StdioFile(std::fopen(path, mode)), mode);
}

StdioFile openForReading(const char* path) {
    struct stat status = {};
    if (::stat(path, &status) == 0 && S_ISFIFO(status.st_mode)) {
        errno = EINVAL;
        return nullptr;
    }
    return openFile(path, "re");
}

StdioFile openFile(const char* path, const char* mode) {
    errno = 0;
    StdioFile file = openFileOrNull(path, mode);
    if (file == nullptr && errno == ENOMEM) throw std::bad_alloc();
    return file;
}

bool closeFile(StdioFile file) {
    return std::fclose(file.release()) == 0;
}

}  // namespace zav
