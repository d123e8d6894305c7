// How the library stays away from the descriptors 0, 1 and 2. What is opened gets the lowest number that is
// free; where the host has closed one of these three, that would be the number on which it reads or writes.
#pragma once

#include <optional>

#include "kest/SignalsBlocked.h"

namespace kest {

// While one lives, none of the numbers 0 to 2 is free, so that whatever this thread opens lies above them. A
// number that the host has closed is taken by a placeholder on which reading and writing fail as before; the
// last one to go gives the numbers back.
//
// Meanwhile nothing may wait for anybody else: signals may be blocked.
class StandardStreamsTaken {
  public:
    StandardStreamsTaken();
    // Leaves errno as it is.
    ~StandardStreamsTaken();
    StandardStreamsTaken(const StandardStreamsTaken&) = delete;
    StandardStreamsTaken& operator=(const StandardStreamsTaken&) = delete;

    // 0, or the number of the error that kept the placeholders away: then nothing is to be opened.
    int error() const { return error_; }

  private:
    // While there are any: a handler that forks in this very thread would leave them to the child. Empty where
    // all three numbers are the host's own.
    std::optional<SignalsBlocked> placeholders_;
    int error_ = 0;
};

// `number`, unless it is 0, 1 or 2, because the host closed that just now: it is closed then, and a duplicate
// takes its place. -1 with errno when there is none. A negative number is handed back.
int movedUp(int number);

// The descriptor that `open` returns, which never was below 3; -1 with errno.
//     const int descriptor = openedAbove([path] { return ::open(path, O_RDONLY | O_CLOEXEC); });
template <class Open>
int openedAbove(Open open) {
    const StandardStreamsTaken taken;
    return taken.error() == 0 ? movedUp(open()) : -1;
}

// Whether the host has a descriptor of that number. REQUIRES: it is 0, 1 or 2.
bool hostHasStream(int number);

}  // namespace kest
