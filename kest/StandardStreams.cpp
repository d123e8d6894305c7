#include "kest/StandardStreams.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "kest/ScopedForkBlock.h"

namespace kest {

namespace {

#ifdef O_PATH
constexpr int placeholderFlags = O_PATH | O_CLOEXEC;
#else
constexpr int placeholderFlags = O_EVTONLY | O_CLOEXEC;
#endif

constexpr int streams = STDERR_FILENO + 1;

bool isOpen(int number) {
    return fcntl(number, F_GETFD) != -1;
}

bool allAreOpen() {
    return isOpen(STDIN_FILENO) && isOpen(STDOUT_FILENO) && isOpen(STDERR_FILENO);
}

// The placeholders of the process. All functions but current() and releaseAfterFork() require that no thread can fork.
class Placeholders {
  public:
    // A counter that changes when placeholders appear and when they are gone; odd while there may be some.
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

    // The child has only the thread that forked, and that thread uses no placeholders.
    void releaseAfterFork() {
        if (users_ == 0) return;
        users_ = 0;
        leave();
    }

    bool isPlaceholder(int number) const { return taken_[number] && isStillOurs(number); }

  private:
    int fill() {
        while (!allAreOpen()) {
            const int number = ::open("/", placeholderFlags);
            if (number < 0) return errno;
            // The host has opened the number itself in the meantime.
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

    // False when the host has replaced the descriptor by one of its own.
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

// A child that the host forks must not inherit the placeholders.
[[maybe_unused]] const int atForks =
    pthread_atfork(nullptr, nullptr, [] { placeholders.releaseAfterFork(); });

// Descriptors that are open while there are no placeholders belong to the host.
bool hostHasAll() {
    const unsigned before = placeholders.current();
    return before % 2 == 0 && allAreOpen() && placeholders.current() == before;
}

}  // namespace

ScopedStreamReservation::ScopedStreamReservation() {
    if (hostHasAll()) return;
    signals_.emplace();
    const ScopedForkBlock held;
    error_ = placeholders.take();
}

ScopedStreamReservation::~ScopedStreamReservation() {
    if (!signals_) return;
    const int saved = error_ != 0 ? error_ : errno;
    if (error_ == 0) {
        const ScopedForkBlock held;
        placeholders.give();
    }
    signals_.reset();
    errno = saved;
}

int moveAboveStandardStreams(int number) {
    if (number < 0 || number >= streams) return number;
    const int higher = fcntl(number, F_DUPFD_CLOEXEC, streams);
    const int error = errno;
    ::close(number);
    errno = error;
    return higher;
}

bool hostHasStream(int number) {
    const ScopedForkBlock held;
    return isOpen(number) && !placeholders.isPlaceholder(number);
}

}  // namespace kest
