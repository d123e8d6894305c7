#include "toolkit/machine/files/OpenStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace toolkit {

void openMissingStreams() {
    // A new descriptor is the lowest that is free.
    int opened = 0;
    while (opened >= 0 && opened <= STDERR_FILENO) opened = ::open("/dev/null", O_RDWR);
    if (opened > STDERR_FILENO) ::close(opened);
}

}  // namespace toolkit
