#pragma once

#include <sys/types.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "kest/Descriptor.h"

namespace toolkit {

// A child process that does the work of a scanner and reports through a pipe, so that its parent survives whatever happens to
// it. It dies with its parent, and the destructor kills it.
class WorkerProcess {
  public:
    using Clock = std::chrono::steady_clock;

    // Runs `work` in the child, which ends with status 1 when `work` returns. The standard streams of the child are
    // /dev/null: if it hangs in the kernel, whoever reads the scanner's output need not wait for it. Throws
    // std::system_error when the child cannot be started.
    explicit WorkerProcess(const std::function<void(int pipe)>& work);
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    // Waits until the deadline for bytes in the pipe or its end. False when neither comes.
    bool waitForInput(Clock::time_point deadline) const;
    // The descriptor that waitForInput() waits for, to wait for several at once.
    int input() const { return pipe_.number(); }
    // The next bytes from the pipe, valid until the next call. Empty at its end, and when it has none at present.
    std::string_view receive();
    // All bytes that are in the pipe.
    std::string drain();
    // The number of bytes that came through the pipe.
    std::uint64_t received() const { return received_; }

    // Kills the child. Does not wait long for it to die: one that hangs in the kernel dies when the kernel lets it.
    void kill();
    // Waits for a child that is about to end. Returns how it ended: "it ended with status 0". REQUIRES: it was not killed.
    std::string join();

  private:
    kest::Descriptor pipe_;
    pid_t process_ = -1;
    std::uint64_t received_ = 0;
    std::array<char, std::size_t{64} << 10> buffer_;
};

}  // namespace toolkit
