#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>

#include "kest/Descriptor.h"
#include "kest/ExitStatus.linux.h"
#include "kest/Launcher.h"
#include "kest/SpawnRequest.linux.h"

namespace kest {

// A program whose parent is not the host but a keeper: a process of its own that starts the program, waits for it, and
// reports through a pipe. The host is free to ignore its children, or to take each of them away in a handler or a
// thread: none of that reaches the program. The keeper itself is nothing that such hosts see, as it ends without a
// signal. It must never exec, which would give it SIGCHLD as the signal of its end.
//
// The keeper uses the memory of the host; where it cannot, a copy.
//
// REQUIRES: used by one thread only. When that thread ends, so does the keeper.
class KeptProcess final : public Process {
  public:
    KeptProcess() = default;
    ~KeptProcess() override { wait(); }

    // 0, or the number of the error. REQUIRES: called once.
    int start(const SpawnRequest& request);

    int wait() override;

    int endDescriptor() const override { return reports_.number(); }

  private:
    int startKeeper();
    static int runKeeper(void* self);
    void keep() const;
    bool hasReport() const;
    bool receive(int& report) const;
    void takeKeeperAway();

    static constexpr std::size_t stackSize = std::size_t{64} * 1024;

    const SpawnRequest* request_ = nullptr;
    const pid_t host_ = getpid();
    const std::unique_ptr<std::byte[]> stack_ = std::make_unique_for_overwrite<std::byte[]>(stackSize);
    // The keeper's reports: the number of an error, and when that is 0, the status of the program.
    Descriptor reports_;
    // Where the keeper writes them, among its own descriptors.
    int keepersEnd_ = -1;
    pid_t keeper_ = 0;
    int status_ = unknownExitStatus;
};

}  // namespace kest
