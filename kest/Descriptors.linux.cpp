#include "kest/Descriptors.linux.h"

#include <fcntl.h>

#include <cerrno>

#include "kest/StandardStreams.h"

namespace kest {

int openPipe(Descriptor& readEnd, Descriptor& writeEnd) {
    const StandardStreamsTaken taken;
    if (taken.error() != 0) return taken.error();
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    Descriptor reading(movedUp(ends[0]));
    Descriptor writing(movedUp(ends[1]));
    if (!reading.isOpen() || !writing.isOpen()) return errno;
    readEnd = std::move(reading);
    writeEnd = std::move(writing);
    return 0;
}

}  // namespace kest
