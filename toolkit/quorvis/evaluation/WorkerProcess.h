#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "kest/Descriptor.h"
#include "toolkit/quorvis/files/LookupBudget.h"

namespace toolkit::quorvis {

// Memory that a worker shares with its owner. The worker collects its messages here and writes them to the pipe when there
// are many. So a message costs no system call, and none is lost when the worker dies.
struct WorkerOutput {
    SharedDeadline deadline;                 // of what the worker is doing
    std::atomic<std::size_t> count = 0;      // of the signatures; 0 until they are read
    std::atomic<std::size_t> begun = 0;      // signatures
    std::array<char, 136> guid{};            // of the latest one
    std::atomic<std::size_t> detection = 0;  // of the latest one, the Detection that is being evaluated
    std::atomic<bool> lastDetection = true;  // whether no other Detection of it follows
    std::atomic<std::uint64_t> sent = 0;     // bytes that were written to the pipe
    std::atomic<std::size_t> used = 0;       // bytes below that were not
    std::array<char, std::size_t{64} << 10> bytes;
};

// A child process that works and reports to its owner. Killed by the destructor.
class WorkerProcess {
  public:
    // Runs `work`, which must not return, in the child. The child has no standard streams: if it hangs in the kernel, who
    // reads the scanner's output need not wait for it. Throws std::system_error when the child cannot be started.
    explicit WorkerProcess(const std::function<void(int pipe, WorkerOutput& output)>& work);
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    const WorkerOutput& output() const { return *output_; }

    // Waits for input. False when none comes in this time.
    bool waitForInput(std::chrono::steady_clock::duration time) const;
    // The next bytes from the pipe, valid until the next call. Empty at its end.
    std::string_view receive();

    // Kills the child. Does not wait long for it to die: one that hangs in the kernel dies when the kernel lets it.
    void kill();
    // Waits for a child that is about to end. Returns how it ended.
    std::string join();
    // All messages that receive() has not returned. REQUIRES: the child was killed or joined.
    std::string rest();

  private:
    [[noreturn]] void runChild(const std::function<void(int pipe, WorkerOutput& output)>& work, int pipe,
                               pid_t parent) const;

    WorkerOutput* output_ = nullptr;
    kest::Descriptor pipe_;
    pid_t process_ = -1;
    std::uint64_t received_ = 0;
    std::array<char, std::size_t{64} << 10> buffer_;
};

}  // namespace toolkit::quorvis
