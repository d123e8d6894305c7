#pragma once

#include <pthread.h>

#include <atomic>
#include <csignal>
#include <cstddef>
#include <memory>

#include "kest/ExitStatus.linux.h"
#include "kest/Launcher.h"
#include "kest/SpawnRequest.linux.h"

namespace kest {

// A program whose parent is not the host but a keeper: a process of its own in the host's memory, which
// starts the program, waits for it, and leaves the status here. It serves hosts in which SIGCHLD is ignored,
// or handled by taking every child away: no such host learns the status of its own children, but in the
// keeper SIGCHLD has its default. The keeper itself is nothing that such hosts see, as it ends without a
// signal. It must never exec, which would give it SIGCHLD as the signal of its end.
class KeptProcess final : public Process {
  public:
    KeptProcess() = default;
    ~KeptProcess() override { wait(); }

    // 0, or the number of the error. REQUIRES: called once.
    int start(const SpawnRequest& request);

    int wait() override;

  private:
    static void* runThread(void* self);
    static int runKeeper(void* self);
    void keep();
    void report(int error);

    static constexpr std::size_t stackSize = std::size_t{64} * 1024;
    // No error number.
    static constexpr int notYet = -1;

    const SpawnRequest* request_ = nullptr;
    const pid_t host_ = getpid();
    // The keeper is the child of this thread, uses its thread-local memory, and is killed when it ends, as it
    // does at the host's exit.
    pthread_t thread_ = {};
    bool threadRuns_ = false;
    const std::unique_ptr<std::byte[]> stack_ = std::make_unique_for_overwrite<std::byte[]>(stackSize);
    std::atomic<int> startError_ = notYet;
    int status_ = unknownExitStatus;
};

}  // namespace kest
