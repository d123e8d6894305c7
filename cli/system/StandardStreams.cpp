#include "cli/system/StandardStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace zavcli {

namespace {

bool lost = false;

// The lowest number that is free is the one that is closed, as those below it are open.
void occupy(int descriptor, int access) {
    if (fcntl(descriptor, F_GETFD) >= 0) return;
    if (open("/dev/null", access) == descriptor) return;
    // Nothing can be written to a directory either, and there is always one.
    if (open("/", O_RDONLY | O_DIRECTORY) != descriptor) _exit(EXIT_FAILURE);
}

// Standard streams may have been made non-blocking by another program that has them too.
bool waitedForRoom(int descriptor) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd room{descriptor, POLLOUT, 0};
    return poll(&room, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

void occupyStandardStreams() {
    occupy(STDIN_FILENO, O_RDONLY);
    occupy(STDOUT_FILENO, O_RDONLY);
    occupy(STDERR_FILENO, O_WRONLY);
}

bool writeAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && !waitedForRoom(descriptor)) return false;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

void writeStandardError(std::string_view text) noexcept {
    if (!writeAll(STDERR_FILENO, text)) lost = true;
}

bool messagesWereLost() {
    return lost;
}

}  // namespace zavcli
