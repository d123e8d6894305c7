#include "toolkit/machine/files/OpenResolved.h"

#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace toolkit {

int openResolved(int directory, const char* path, int flags, std::uint64_t resolve) {
    open_how how{};
    how.flags = static_cast<unsigned>(flags);
    how.resolve = resolve;
    return static_cast<int>(::syscall(SYS_openat2, directory, path, &how, sizeof how));
}

}  // namespace toolkit
