#include "kest/StandardStreams.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "kest/ForksHeldOff.h"

namespace kest {

namespace {

#ifdef O_PATH
constexpr int namesOnly = O_PATH | O_CLOEXEC;
#else
constexpr int namesOnly = O_EVTONLY | O_CLOEXEC;
#endif

constexpr int streams = STDERR_FILENO + 1;

bool isOpen(int number) {
    return fcntl(number, F_GETFD) != -1;
}

bool allAreOpen() {
    return isOpen(STDIN_FILENO) && isOpen(STDOUT_FILENO) && isOpen(STDERR_FILENO);
}

// The placeholders of the process. All but current() and forked() need forks to be held off.
class Placeholders {
  public:
    // Odd while there may be placeholders, and another number after each time that there were.
    unsigned current() const { return turn_; }

    int take() {
        if (users_ == 0) ++turn_;
        ++users_;
        const int error = fill();
        if (error != 0) give();
        return error;
    }

    void give() {
        if (--users_ == 0) leave();
    }

    // Of the threads that used them only the one that forked is left, and that one did not.
    void forked() {
        if (users_ == 0) return;
        users_ = 0;
        leave();
    }

    bool isPlaceholder(int number) const { return taken_[number] && isStillOurs(number); }

  private:
    int fill() {
        while (!allAreOpen()) {
            const int number = ::open("/", namesOnly);
            if (number < 0) return errno;
            // The host itself was faster.
            if (number >= streams) {
                ::close(number);
                continue;
            }
            taken_[number] = true;
            fstat(number, &identity_);
        }
        return 0;
    }

    void leave() {
        for (int number = 0; number < streams; ++number) {
            if (isPlaceholder(number)) ::close(number);
            taken_[number] = false;
        }
        ++turn_;
    }

    // Not when the host has put a descriptor of its own in that place meanwhile.
    bool isStillOurs(int number) const {
        struct stat found = {};
        return fstat(number, &found) == 0 && found.st_dev == identity_.st_dev &&
               found.st_ino == identity_.st_ino;
    }

    std::atomic<unsigned> turn_ = 0;
    int users_ = 0;
    bool taken_[streams] = {};
    struct stat identity_ = {};
};

constinit Placeholders placeholders;

// A child that the host forks does not inherit them.
[[maybe_unused]] const int atForks = pthread_atfork(nullptr, nullptr, [] { placeholders.forked(); });

// What is open while there are no placeholders is the host's, and stays.
bool hostHasAll() {
    const unsigned before = placeholders.current();
    return before % 2 == 0 && allAreOpen() && placeholders.current() == before;
}

}  // namespace

StandardStreamsTaken::StandardStreamsTaken() {
    if (hostHasAll()) return;
    placeholders_.emplace();
    const ForksHeldOff held;
    error_ = placeholders.take();
}

StandardStreamsTaken::~StandardStreamsTaken() {
    if (!placeholders_) return;
    const int saved = error_ != 0 ? error_ : errno;
    if (error_ == 0) {
        const ForksHeldOff held;
        placeholders.give();
    }
    placeholders_.reset();
    errno = saved;
}

int movedUp(int number) {
    if (number < 0 || number >= streams) return number;
    const int higher = fcntl(number, F_DUPFD_CLOEXEC, streams);
    const int error = errno;
    ::close(number);
    errno = error;
    return higher;
}

bool hostHasStream(int number) {
    const ForksHeldOff held;
    return isOpen(number) && !placeholders.isPlaceholder(number);
}

}  // namespace kest
