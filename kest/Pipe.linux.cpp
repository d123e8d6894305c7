#include "kest/Pipe.linux.h"

#include <fcntl.h>

#include <cerrno>

#include "kest/StandardStreams.h"

namespace kest {

int openPipe(Descriptor& readEnd, Descriptor& writeEnd) {
    const ScopedStreamReservation taken;
    if (taken.error() != 0) return taken.error();
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    Descriptor reading(moveAboveStandardStreams(ends[0]));
    Descriptor writing(moveAboveStandardStreams(ends[1]));
    if (!reading.isOpen() || !writing.isOpen()) return errno;
    readEnd = std::move(reading);
    writeEnd = std::move(writing);
    return 0;
}

}  // namespace kest
