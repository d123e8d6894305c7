#include "cli/Interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace zavcli {

namespace {

volatile std::sig_atomic_t caught = 0;

// Of this process's only thread that starts any: the numbers of its children, each with a blank behind it.
constexpr const char* kChildren = "/proc/thread-self/children";

// Calls only what a signal handler may call. What a terminal ends gets the signal twice, which does no harm.
void sendToChildren(int signal) {
    const int file = open(kChildren, O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    std::array<char, 512> text;
    const ssize_t length = read(file, text.data(), text.size());
    close(file);
    pid_t child = 0;
    for (ssize_t i = 0; i < length; ++i) {
        const char digit = text.at(static_cast<std::size_t>(i));
        if (digit != ' ') {
            child = 10 * child + (digit - '0');
        } else if (child > 0) {
            kill(child, signal);
            child = 0;
        }
    }
}

void endScanner(int signal) {
    const int error = errno;
    caught = signal;
    sendToChildren(signal);
    errno = error;
}

}  // namespace

InterruptGuard::InterruptGuard() {
    for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
        sigaction(kEndingSignals.at(i), nullptr, &before_.at(i));
        if (before_.at(i).sa_handler == SIG_IGN) continue;
        struct sigaction action {};
        action.sa_handler = endScanner;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
        sigaction(kEndingSignals.at(i), &action, nullptr);
    }
}

InterruptGuard::~InterruptGuard() {
    for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
        sigaction(kEndingSignals.at(i), &before_.at(i), nullptr);
    }
}

bool wasInterrupted() {
    return caught != 0;
}

void endByInterrupt() {
    const int signal = caught;
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    raise(signal);
    _exit(128 + signal);
}

}  // namespace zavcli
