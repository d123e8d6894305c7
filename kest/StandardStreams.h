// Keeps the library's files away from descriptors 0, 1 and 2. A new file gets the lowest free number. In a host that has
// closed a standard stream, that could be a number to which the host still writes.
#pragma once

#include <optional>

#include "kest/ScopedSignalBlock.h"

namespace kest {

// Reserves the numbers 0 to 2, so that files opened by this thread get higher ones. A placeholder occupies each number
// that the host has closed; reading and writing it still fail. The last reservation to end frees the numbers.
//
// Signals may be blocked during a reservation, so do not wait for other threads or processes.
class ScopedStreamReservation {
  public:
    ScopedStreamReservation();
    // Does not change errno.
    ~ScopedStreamReservation();
    ScopedStreamReservation(const ScopedStreamReservation&) = delete;
    ScopedStreamReservation& operator=(const ScopedStreamReservation&) = delete;

    // 0 or an error number. After an error nothing is reserved and no file must be opened.
    int error() const { return error_; }

  private:
    // Prevents a handler from forking in this thread while there are placeholders, which the child would inherit.
    // Empty when the host has all three streams.
    std::optional<ScopedSignalBlock> signals_;
    int error_ = 0;
};

// Returns `number` if it is above 2 or negative. The numbers 0 to 2 can occur when the host closes a stream during the
// call; the descriptor is then replaced by a duplicate with a higher number. -1 with errno when that fails.
int moveAboveStandardStreams(int number);

// Calls `open` and returns its descriptor, which is above 2; -1 with errno on error.
//     const int descriptor = openAboveStandardStreams([path] { return ::open(path, O_RDONLY | O_CLOEXEC); });
template <class Open>
int openAboveStandardStreams(Open open) {
    const ScopedStreamReservation taken;
    return taken.error() == 0 ? moveAboveStandardStreams(open()) : -1;
}

// Whether the host has this standard stream open. REQUIRES: `number` is 0, 1 or 2.
bool hostHasStream(int number);

}  // namespace kest
