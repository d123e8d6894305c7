#pragma once

#include <csignal>

namespace kest {

// While one lives, a failed write of this thread is an error and no signal: writing beyond the limit for files
// would end the host, as would writing to a pipe that nobody reads.
class WriteSignalsHeld {
  public:
    WriteSignalsHeld();
    ~WriteSignalsHeld();
    WriteSignalsHeld(const WriteSignalsHeld&) = delete;
    WriteSignalsHeld& operator=(const WriteSignalsHeld&) = delete;

    // Takes the signal away that came with an error of a write, unless another one was waiting before.
    void forget(int error) const;

  private:
    sigset_t mask_ = {};     // of the thread before
    sigset_t waiting_ = {};  // what waited before
};

}  // namespace kest
