#include "cli/system/Ending.h"

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

struct Noted {
    std::array<char, PATH_MAX> temporaryDirectory{};
    std::array<char, NAME_MAX + 1> unfinishedFile{};
    int unfinishedDirectory = -1;
    volatile std::sig_atomic_t lineShown = 0;
};

Noted noted;

// A handler may run when the stack is used up.
std::array<char, 64 << 10> handlerStack;

template <std::size_t kSize>
void keep(const std::string& text, std::array<char, kSize>& place) {
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

// Calls only what a signal handler may call. While it runs on the first thread, that thread does nothing else: no
// scanner is started and no file made meanwhile.
void cleanUp(int signal) {
    if (gettid() != getpid() && !isFault(signal)) {
        const int error = errno;
        tgkill(getpid(), getpid(), signal);
        errno = error;
        return;
    }
    if (noted.lineShown != 0) writeStandardError("\r\x1b[K");
    endDescendants();
    if (noted.unfinishedDirectory >= 0) unlinkat(noted.unfinishedDirectory, noted.unfinishedFile.data(), 0);
    if (noted.temporaryDirectory.front() != '\0') removeTree(AT_FDCWD, noted.temporaryDirectory.data());
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

void cleanUpAtSignals() {
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    sigaltstack(&stack, nullptr);
    // What a scanner that ended has left running becomes a child of this process, which can then end it.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // Where it is ignored, children vanish together with their status.
    std::signal(SIGCHLD, SIG_DFL);
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (endsByDefault(signal)) handle(signal);
    }
}

SignalsHeld::SignalsHeld() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalsHeld::~SignalsHeld() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void noteTemporaryDirectory(const std::string& path) {
    keep(path, noted.temporaryDirectory);
}

void noteUnfinishedFile(int directory, const std::string& name) {
    keep(name, noted.unfinishedFile);
    noted.unfinishedDirectory = directory;
}

void noteLineShown(bool shown) noexcept {
    noted.lineShown = shown ? 1 : 0;
}

}  // namespace zavcli
