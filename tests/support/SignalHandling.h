// Ways in which hosts handle signals.
#pragma once

#include <sys/time.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <thread>

namespace zavtest {

// A host's handling of SIGCHLD, with a name for the test.
struct ChildHandling {
    const char* name;
    void (*handler)(int);
    int flags;
};

// A handler that reaps every child that has ended, as some hosts have.
inline void reapEveryChild(int) {
    const int saved = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    errno = saved;
}

// Sets the disposition of a signal and restores it at the end.
class Disposition {
  public:
    Disposition(int number, void (*handler)(int), int flags) : number_(number) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = flags;
        sigaction(number_, &action, &before_);
    }
    Disposition(const Disposition&) = delete;
    Disposition& operator=(const Disposition&) = delete;
    ~Disposition() { sigaction(number_, &before_, nullptr); }

  private:
    int number_;
    struct sigaction before_ = {};
};

// Sends a signal every millisecond, which interrupts system calls of the host. The handler stays installed, as the
// last signal may arrive late.
class SignalStorm {
  public:
    SignalStorm() {
        struct sigaction action = {};
        action.sa_handler = [](int) { ++arrived(); };
        sigaction(SIGALRM, &action, nullptr);
        setTimer(1000);
    }
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;
    ~SignalStorm() { setTimer(0); }

    static int count() { return arrived(); }

  private:
    static std::atomic<int>& arrived() {
        static std::atomic<int> number = 0;
        return number;
    }
    static void setTimer(suseconds_t microseconds) {
        const itimerval interval = {{0, microseconds}, {0, microseconds}};
        setitimer(ITIMER_REAL, &interval, nullptr);
    }
};

// A thread that reaps every child it can, and counts them.
class ReapingThread {
  public:
    // With __WALL in `options` it also reaps keepers.
    explicit ReapingThread(int options = 0) : options_(options) {}
    ReapingThread(const ReapingThread&) = delete;
    ReapingThread& operator=(const ReapingThread&) = delete;
    ~ReapingThread() {
        stop_ = true;
        thread_.join();
    }

    int count() const { return taken_; }

  private:
    void reap() {
        while (!stop_) {
            if (waitpid(-1, nullptr, options_) > 0) ++taken_;
            std::this_thread::yield();
        }
    }

    const int options_;
    std::atomic<bool> stop_ = false;
    std::atomic<int> taken_ = 0;
    std::thread thread_{[this] { reap(); }};
};

}  // namespace zavtest
