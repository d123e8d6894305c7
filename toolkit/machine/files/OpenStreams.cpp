#include "toolkit/machine/files/OpenStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace toolkit {

void openMissingStreams() {
    // open() returns the lowest free descriptor.
    int opened = 0;
    while (opened >= 0 && opened <= STDERR_FILENO) opened = ::open("/dev/null", O_RDWR);
    if (opened > STDERR_FILENO) ::close(opened);
}

}  // namespace toolkit
