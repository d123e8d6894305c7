#include "cli/system/SignalCleanup.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>

#include "cli/system/Descendants.h"
#include "cli/system/StandardStreams.h"
#include "cli/system/TreeRemoval.h"

namespace zavcli {

namespace {

struct Registered {
    std::array<char, PATH_MAX> temporaryDirectory{};
    std::array<char, NAME_MAX + 1> unfinishedFile{};
    int unfinishedDirectory = -1;
    volatile std::sig_atomic_t progressLine = 0;
};

Registered registered;

// The handler has a stack of its own, because a stack overflow raises SIGSEGV.
std::array<char, 64 << 10> handlerStack;

template <std::size_t kSize>
void copyTo(std::array<char, kSize>& place, const std::string& text) {
    if (text.size() >= kSize) return;
    std::copy(text.begin(), text.end(), place.begin());
    place.at(text.size()) = '\0';
}

bool endsByDefault(int signal) {
    constexpr std::array kOthers = {SIGKILL,  SIGSTOP, SIGCHLD, SIGCONT, SIGURG,
                                    SIGWINCH, SIGTSTP, SIGTTIN, SIGTTOU};
    return std::find(kOthers.begin(), kOthers.end(), signal) == kOthers.end();
}

bool isFault(int signal) {
    constexpr std::array kFaults = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};
    return std::find(kFaults.begin(), kFaults.end(), signal) != kFaults.end();
}

[[noreturn]] void endBy(int signal) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    raise(signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    _exit(128 + signal);
}

// Async-signal-safe. It always runs on the main thread, except for faults: while that thread is here, it
// starts no scanner and creates no file.
void cleanUp(int signal) {
    if (gettid() != getpid() && !isFault(signal)) {
        const int error = errno;
        tgkill(getpid(), getpid(), signal);
        errno = error;
        return;
    }
    if (registered.progressLine != 0) writeStandardError("\r\x1b[K");
    endDescendants();
    if (registered.unfinishedDirectory >= 0)
        unlinkat(registered.unfinishedDirectory, registered.unfinishedFile.data(), 0);
    if (registered.temporaryDirectory.front() != '\0')
        removeTree(AT_FDCWD, registered.temporaryDirectory.data());
    endBy(signal);
}

void handle(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
    action.sa_handler = cleanUp;
    action.sa_flags = SA_ONSTACK | SA_RESTART;
    sigfillset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void installSignalCleanup() {
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    sigaltstack(&stack, nullptr);
    // Processes that an ended scanner left behind become children of this process, which can then end them.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // If SIGCHLD is ignored, the exit status of a child is lost.
    std::signal(SIGCHLD, SIG_DFL);
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (endsByDefault(signal)) handle(signal);
    }
}

SignalsBlocked::SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalsBlocked::~SignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void registerTemporaryDirectory(const std::string& path) {
    copyTo(registered.temporaryDirectory, path);
}

void registerUnfinishedFile(int directory, const std::string& name) {
    copyTo(registered.unfinishedFile, name);
    registered.unfinishedDirectory = directory;
}

void registerProgressLine(bool shown) noexcept {
    registered.progressLine = shown ? 1 : 0;
}

}  // namespace zavcli
