#include "cli/system/StandardStreams.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "cli/system/Failure.h"

namespace zavcli {

namespace {

bool lost = false;

// open() returns the lowest free number, which is this descriptor, because those below it are open.
void reserve(int descriptor, int access) {
    if (fcntl(descriptor, F_GETFD) >= 0) return;
    if (open("/dev/null", access) == descriptor) return;
    // A directory cannot be written to either, and the root directory always exists.
    if (open("/", O_RDONLY | O_DIRECTORY) != descriptor) _exit(EXIT_FAILURE);
}

// Another program that shares the stream may have made it non-blocking. Returns whether to try again.
bool waitForRoom(int descriptor) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd room{descriptor, POLLOUT, 0};
    return poll(&room, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

void reserveStandardStreams() {
    reserve(STDIN_FILENO, O_RDONLY);
    reserve(STDOUT_FILENO, O_RDONLY);
    reserve(STDERR_FILENO, O_WRONLY);
}

bool writeAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && !waitForRoom(descriptor)) return false;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

void writeStandardOutput(std::string_view text) {
    if (!writeAll(STDOUT_FILENO, text))
        throw Failure(kExitFailed,
                      fmt::format("cannot write to standard output: {}", systemErrorText(errno)));
}

void writeStandardError(std::string_view text) noexcept {
    if (!writeAll(STDERR_FILENO, text)) lost = true;
}

bool messagesWereLost() {
    return lost;
}

}  // namespace zavcli
