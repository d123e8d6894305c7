#pragma once

#include <cerrno>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace zavtest {

using Codes = std::set<int>;

// A system call that fails during the run of a scanner, and the permitted return codes of the run.
struct FaultCase {
    std::string function;
    int error;
    // The argument is the path of the failed call.
    std::function<Codes(const std::string& path)> codes;
};

inline FaultCase onAnything(const char* function, int error, int code) {
    return {function, error, [code](const std::string&) { return Codes{code}; }};
}

// The calls that the runs of both scanners have in common. `notStarted` is the code when a scanner cannot be started.
inline std::vector<FaultCase> commonFaults(int notStarted) {
    return {
        onAnything("fread", EIO, 0),
        onAnything("access", ENOENT, 0),
        onAnything("access", EEXIST, 0),
        onAnything("open", ENOMEM, 5),
        onAnything("read", EINTR, 0),
        onAnything("pipe2", EMFILE, notStarted),
        onAnything("pipe2", ENOMEM, 5),
        onAnything("posix_spawn", EAGAIN, notStarted),
        onAnything("posix_spawn", ENOENT, notStarted),
        onAnything("posix_spawn", ENOMEM, 5),
        onAnything("posix_spawn_file_actions_adddup2", EBADF, notStarted),
        onAnything("posix_spawn_file_actions_adddup2", ENOMEM, 5),
        onAnything("posix_spawn_file_actions_addopen", ENOMEM, 5),
        onAnything("posix_spawnattr_setflags", EINVAL, notStarted),
        onAnything("SYS_read", EINTR, 0),
        onAnything("clone", EAGAIN, notStarted),
        onAnything("clone", ENOMEM, 5),
        onAnything("fcntl", EBADF, 0),
    };
}

inline std::vector<FaultCase> withCommonFaults(int notStarted, const std::vector<FaultCase>& more) {
    std::vector<FaultCase> all = commonFaults(notStarted);
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

}  // namespace zavtest
