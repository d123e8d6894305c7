#pragma once

#include <csignal>

namespace kest {

// Blocks SIGXFSZ and SIGPIPE, so that a failed write of this thread is an error. These signals would end the host when
// it exceeds the file size limit or writes to a pipe without a reader.
class ScopedWriteSignalBlock {
  public:
    ScopedWriteSignalBlock();
    ~ScopedWriteSignalBlock();
    ScopedWriteSignalBlock(const ScopedWriteSignalBlock&) = delete;
    ScopedWriteSignalBlock& operator=(const ScopedWriteSignalBlock&) = delete;

    // Discards the signal that a failed write raised, unless the signal was pending before.
    void discardSignalOf(int error) const;

  private:
    sigset_t previousMask_ = {};
    sigset_t previouslyPending_ = {};
};

}  // namespace kest
