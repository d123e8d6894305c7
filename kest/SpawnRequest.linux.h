#pragma once

#include <spawn.h>

#include "kest/Descriptor.h"
#include "kest/Process.h"

namespace kest {

// The prepared start of a program. start() itself uses neither the heap nor a lock.
class SpawnRequest {
  public:
    // `output` becomes the program's standard output. `program` and `output` must outlive start().
    SpawnRequest(const Program& program, const Descriptor& output);
    SpawnRequest(const SpawnRequest&) = delete;
    SpawnRequest& operator=(const SpawnRequest&) = delete;
    ~SpawnRequest();

    // Returns 0 and the new child in `pid`, or an error number.
    int start(pid_t& pid) const;

  private:
    int prepareDescriptors(const Descriptor& output);
    int prepareSignals();

    Program program_;
    posix_spawn_file_actions_t actions_ = {};
    posix_spawnattr_t attributes_ = {};
    int error_ = 0;
};

}  // namespace kest
