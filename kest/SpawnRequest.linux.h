#pragma once

#include <spawn.h>

#include "kest/Launcher.h"

namespace kest {

// Everything that starting a program needs, prepared beforehand: start() itself needs neither the heap nor a
// lock.
class SpawnRequest {
  public:
    // `output` becomes the program's standard output. `program` and `output` must outlive start().
    SpawnRequest(const Program& program, const Descriptor& output);
    SpawnRequest(const SpawnRequest&) = delete;
    SpawnRequest& operator=(const SpawnRequest&) = delete;
    ~SpawnRequest();

    // 0 with the new child in `pid`, or the number of the error.
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
