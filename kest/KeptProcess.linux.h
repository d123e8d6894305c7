#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>

#include "kest/Descriptor.h"
#include "kest/ExitStatus.linux.h"
#include "kest/Process.h"
#include "kest/SpawnRequest.linux.h"

namespace kest {

// A program that is started by a keeper, a separate process that waits for the program and reports its status through
// a pipe. The program is not a child of the host, so its status is available even in a host that ignores SIGCHLD or
// that reaps every child in a handler or a thread. Such hosts do not notice the keeper, which ends without a signal.
// The keeper must never call execve, which would set its exit signal to SIGCHLD.
//
// The keeper shares the memory of the host, or has a copy of it where sharing is not possible.
//
// REQUIRES: used by one thread only. The keeper is killed when that thread ends.
class KeptProcess final : public Process {
  public:
    KeptProcess() = default;
    ~KeptProcess() override { wait(); }

    // Returns 0 or an error number. REQUIRES: called once.
    int start(const SpawnRequest& request);

    int wait() override;

    int endDescriptor() const override { return reports_.number(); }

  private:
    int startKeeper();
    static int runKeeper(void* self);
    void keep() const;
    bool hasReport() const;
    bool receive(int& report) const;
    void reapKeeper();

    static constexpr std::size_t stackSize = std::size_t{64} * 1024;

    const SpawnRequest* request_ = nullptr;
    const pid_t host_ = getpid();
    const std::unique_ptr<std::byte[]> stack_ = std::make_unique_for_overwrite<std::byte[]>(stackSize);
    // Delivers an error number when the program was started or not, then, if that was 0, the program's status.
    Descriptor reports_;
    // The number of the pipe's writing end in the keeper.
    int keepersEnd_ = -1;
    pid_t keeper_ = 0;
    int status_ = unknownExitStatus;
};

}  // namespace kest
