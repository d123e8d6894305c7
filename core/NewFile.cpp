#include "core/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "kest/ErrorText.h"
#include "kest/Escape.h"
#include "kest/ScopedWriteSignalBlock.h"
#include "kest/StandardStreams.h"
#include "kest/Text.h"

namespace zav {

namespace {

bool isPipe(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

// Does not follow a link and does not wait for the reader of a pipe.
StdioFile openExisting(const char* path) {
    const int descriptor = kest::openAboveStandardStreams(
        [path] { return ::open(path, O_WRONLY | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
    if (descriptor < 0) return nullptr;
    if (!isPipe(descriptor)) return StdioFile(::fdopen(descriptor, "w"));
    ::close(descriptor);
    errno = EEXIST;
    return nullptr;
}

StdioFile openNew(const char* path) {
    StdioFile file = openFile(path, "wxe");
    if (file != nullptr) ::fchmod(::fileno(file.get()), S_IRUSR | S_IWUSR);
    return file == nullptr && errno == EEXIST ? openExisting(path) : std::move(file);
}

struct Outcome {
    WriteResult written;
    int error;  // 0 when no system call failed
};

Outcome write(const char* path, const WriteContent& writeContent) {
    const kest::ScopedWriteSignalBlock held;
    StdioFile file = openNew(path);
    if (file == nullptr) return {WriteResult::kNotCreated, errno};
    errno = 0;
    const bool taken = writeContent(file.get());
    int error = errno;
    const bool closed = closeFile(std::move(file));
    if (taken && closed) return {WriteResult::kComplete, 0};
    if (taken) error = errno;
    held.discardSignalOf(error);
    return {WriteResult::kFailed, error};
}

}  // namespace

WriteResult writeNewFile(const std::wstring& path, const WriteContent& writeContent, std::string& failure) {
    const std::string name = kest::narrow(path);
    const Outcome outcome = write(name.c_str(), writeContent);
    if (outcome.written == WriteResult::kComplete || !failure.empty()) return outcome.written;
    failure = outcome.written == WriteResult::kNotCreated ? "Cannot make [" : "Cannot write [";
    failure += kest::escaped(name) + "]: ";
    failure += outcome.error != 0 ? kest::errorText(outcome.error) : "a text of it is null";
    return outcome.written;
}

}  // namespace zav
