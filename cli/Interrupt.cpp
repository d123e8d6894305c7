#include "cli/Interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace zavcli {

namespace {

volatile std::sig_atomic_t caught = 0;

// Of this process's only thread that starts any.
constexpr const char* kOwnChildren = "/proc/thread-self/children";

// What follows calls only what a signal handler may call.

// The numbers in a list of the kernel's, each of which has a blank behind it.
struct Children {
    std::array<pid_t, 64> numbers{};
    std::size_t count = 0;
};

Children childrenIn(const char* list) {
    Children children;
    const int file = open(list, O_RDONLY | O_CLOEXEC);
    if (file < 0) return children;
    std::array<char, 512> text{};
    const ssize_t length = read(file, text.data(), text.size());
    close(file);
    pid_t child = 0;
    for (ssize_t i = 0; i < length; ++i) {
        const char digit = text.at(static_cast<std::size_t>(i));
        if (digit != ' ') {
            child = 10 * child + (digit - '0');
        } else {
            if (children.count < children.numbers.size()) children.numbers.at(children.count++) = child;
            child = 0;
        }
    }
    return children;
}

Children childrenOf(pid_t process) {
    std::array<char, 64> path{};
    char* end = path.data();
    const auto append = [&](std::string_view text) { end = std::copy(text.begin(), text.end(), end); };
    const auto appendNumber = [&] { end = std::to_chars(end, path.data() + path.size(), process).ptr; };
    append("/proc/");
    appendNumber();
    append("/task/");
    appendNumber();
    append("/children");
    return childrenIn(path.data());
}

// The scanner is a child of this process or of one that keeps it for this process. What a terminal ends gets the signal
// twice, which does no harm.
void sendToScanner(int signal) {
    const Children own = childrenIn(kOwnChildren);
    for (std::size_t i = 0; i < own.count; ++i) {
        const Children kept = childrenOf(own.numbers.at(i));
        for (std::size_t k = 0; k < kept.count; ++k) kill(kept.numbers.at(k), signal);
        kill(own.numbers.at(i), signal);
    }
}

void endScanner(int signal) {
    const int error = errno;
    caught = signal;
    sendToScanner(signal);
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
