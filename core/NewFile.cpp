#include "core/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "kest/ErrorText.h"
#include "kest/Shown.h"
#include "kest/StandardStreams.h"
#include "kest/Text.h"
#include "kest/WriteSignalsHeld.h"

namespace zav {

namespace {

bool isPipe(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

// Neither follows a link nor waits for who reads a pipe.
File openExisting(const char* path) {
    const int descriptor = kest::openedAbove(
        [path] { return ::open(path, O_WRONLY | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
    if (descriptor < 0) return nullptr;
    if (!isPipe(descriptor)) return File(::fdopen(descriptor, "w"));
    ::close(descriptor);
    errno = EEXIST;
    return nullptr;
}

File openNew(const char* path) {
    File file = openFile(path, "wxe");
    if (file != nullptr) ::fchmod(::fileno(file.get()), S_IRUSR | S_IWUSR);
    return file == nullptr && errno == EEXIST ? openExisting(path) : std::move(file);
}

struct Outcome {
    Written written;
    int error;  // 0 where the system is not what failed
};

Outcome write(const char* path, const Writing& writing) {
    const kest::WriteSignalsHeld held;
    File file = openNew(path);
    if (file == nullptr) return {Written::kNotMade, errno};
    errno = 0;
    const bool taken = writing(file.get());
    int error = errno;
    const bool closed = closeFile(std::move(file));
    if (taken && closed) return {Written::kWhole, 0};
    if (taken) error = errno;
    held.forget(error);
    return {Written::kFailed, error};
}

}  // namespace

Written writeNewFile(const std::wstring& path, const Writing& writing, std::string& trouble) {
    const std::string name = kest::narrow(path);
    const Outcome outcome = write(name.c_str(), writing);
    if (outcome.written == Written::kWhole || !trouble.empty()) return outcome.written;
    trouble = outcome.written == Written::kNotMade ? "Cannot make [" : "Cannot write [";
    trouble += kest::shown(name) + "]: ";
    trouble += outcome.error != 0 ? kest::errorText(outcome.error) : "a text of it is null";
    return outcome.written;
}

}  // namespace zav
