#include "cli/system/Descendants.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <ctime>

#include "cli/system/DirectoryEntries.h"

namespace zavcli {

namespace {

// One second for each of the two signals.
constexpr int kRounds = 200;
constexpr long kRoundNanoseconds = 5'000'000;

// The path of a file below /proc, built without allocating memory.
class ProcPath {
  public:
    ProcPath& add(const char* text) {
        while (*text != '\0') put(*text++);
        return *this;
    }
    ProcPath& add(pid_t number) {
        std::array<char, 12> digits{};
        std::size_t count = 0;
        for (; number > 0 || count == 0; number /= 10)
            digits.at(count++) = static_cast<char>('0' + number % 10);
        while (count > 0) put(digits.at(--count));
        return *this;
    }
    int open(int flags) const { return ::open(path_.data(), flags | O_RDONLY | O_CLOEXEC); }

  private:
    void put(char character) {
        if (length_ + 1 < path_.size()) path_.at(length_++) = character;
    }

    std::array<char, 64> path_{};
    std::size_t length_ = 0;
};

class Processes {
  public:
    // Finds all descendants of this process, the nearest first.
    void find() {
        count_ = 0;
        addChildrenOf(getpid());
        for (std::size_t i = 0; i < count_; ++i) addChildrenOf(list_.at(i));
    }
    bool empty() const { return count_ == 0; }
    void send(int signal) const {
        for (std::size_t i = 0; i < count_; ++i) kill(list_.at(i), signal);
    }

  private:
    void addChildrenOf(pid_t process) {
        const int tasks = ProcPath().add("/proc/").add(process).add("/task").open(O_DIRECTORY);
        if (tasks < 0) return;
        forEachEntry(tasks, [&](const char* thread) { addChildrenOf(process, thread); });
        close(tasks);
    }

    // The file holds the process ids of the thread's children, each followed by a blank.
    void addChildrenOf(pid_t process, const char* thread) {
        const int file =
            ProcPath().add("/proc/").add(process).add("/task/").add(thread).add("/children").open(0);
        if (file < 0) return;
        std::array<char, 512> text;
        pid_t child = 0;
        for (ssize_t length = 0; (length = read(file, text.data(), text.size())) > 0;) {
            for (ssize_t i = 0; i < length; ++i) {
                const char digit = text.at(static_cast<std::size_t>(i));
                if (digit != ' ') {
                    child = 10 * child + (digit - '0');
                } else {
                    add(child);
                    child = 0;
                }
            }
        }
        close(file);
    }

    void add(pid_t process) {
        if (process > 0 && count_ < list_.size()) list_.at(count_++) = process;
    }

    std::array<pid_t, 512> list_{};
    std::size_t count_ = 0;
};

void reap() {
    while (waitpid(-1, nullptr, WNOHANG | __WALL) > 0) {
    }
}

// Sends the signal and waits for up to a second. Returns whether all processes have ended.
bool endWithin(Processes& processes, int signal, bool repeat) {
    const timespec pause{0, kRoundNanoseconds};
    for (int round = 0; round < kRounds; ++round) {
        if (round == 0 || repeat) processes.send(signal);
        nanosleep(&pause, nullptr);
        reap();
        processes.find();
        if (processes.empty()) return true;
    }
    return false;
}

}  // namespace

void endDescendants() {
    reap();
    Processes processes;
    processes.find();
    if (processes.empty()) return;
    processes.send(SIGCONT);
    if (!endWithin(processes, SIGTERM, false)) endWithin(processes, SIGKILL, true);
}

}  // namespace zavcli
