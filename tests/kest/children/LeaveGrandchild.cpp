// LeaveGrandchild <bytes> [<named pipe>]: starts a process that shares its standard output, writes "x" <bytes> times
// and exits with 7. The other process lives until the named pipe is opened for writing; without a named pipe it
// writes "more" until a write fails.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

void waitFor(const char* namedPipe) {
    open(namedPipe, O_RDONLY | O_CLOEXEC);
    _exit(0);
}

void writeForever() {
    while (write(STDOUT_FILENO, "more\n", 5) > 0) {
    }
    _exit(0);
}

}  // namespace

int main(int count, char** arguments) {
    const pid_t grandchild = fork();
    if (grandchild < 0) return 1;
    if (grandchild == 0 && count > 2) waitFor(arguments[2]);
    if (grandchild == 0) writeForever();
    const std::string bytes(static_cast<std::size_t>(std::atoi(arguments[1])), 'x');
    for (std::size_t written = 0; written < bytes.size();) {
        const ssize_t length = write(STDOUT_FILENO, bytes.data() + written, bytes.size() - written);
        if (length < 0) return 2;
        written += static_cast<std::size_t>(length);
    }
    return 7;
}
