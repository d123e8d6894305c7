#pragma once

#include <sys/types.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "kest/Descriptor.h"
#include "toolkit/quorvis/evaluation/ScanTail.h"

namespace toolkit::quorvis {

// A child process that works and tells of it; killed when its owner is done with it.
class WorkerProcess {
  public:
    // Runs `work`, which does not return, in the child. Its standard streams are shut: whoever waits for the scanner's
    // output to end would wait for a child that cannot be killed as well. Throws std::system_error when it cannot be started.
    explicit WorkerProcess(const std::function<void(int pipe, ScanTail& tail)>& work);
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    const ScanTail& tail() const { return *tail_; }

    // False when nothing has come for so long.
    bool waitForInput(std::chrono::steady_clock::duration time) const;
    // What has come through the pipe; empty at its end. It stands there until the next call.
    std::string_view receive();

    // Ends the child; one that hangs in the kernel dies when the kernel lets go of it, and nobody waits for that.
    void kill();
    // Waits for a child that has nothing more to do. Returns how it ended.
    std::string join();
    // All that has not come through the pipe. REQUIRES: the child was killed or joined.
    std::string rest();

  private:
    [[noreturn]] void runChild(const std::function<void(int pipe, ScanTail& tail)>& work, int pipe,
                               pid_t parent) const;

    ScanTail* tail_ = nullptr;
    kest::Descriptor pipe_;
    pid_t process_ = -1;
    std::uint64_t received_ = 0;
    std::array<char, std::size_t{64} << 10> buffer_;
};

}  // namespace toolkit::quorvis
