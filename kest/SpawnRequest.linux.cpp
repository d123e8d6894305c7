#include "kest/SpawnRequest.linux.h"

#include <fcntl.h>

#include <csignal>
#include <cstring>

#include "kest/StandardStreams.h"

namespace kest {

namespace {

constexpr const char* nullDevice = "/dev/null";

}  // namespace

SpawnRequest::SpawnRequest(const Program& program, const Descriptor& output) : program_(program) {
    // With glibc these two cannot fail.
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
    error_ = prepareDescriptors(output);
    if (error_ == 0) error_ = prepareSignals();
}

SpawnRequest::~SpawnRequest() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
}

// Standard input is opened last: the closed descriptors leave room for it in a host that has reached its limit. The null
// device replaces a missing standard error, as the first file that the child opens would take its number.
int SpawnRequest::prepareDescriptors(const Descriptor& output) {
    int error = posix_spawn_file_actions_adddup2(&actions_, output.number(), STDOUT_FILENO);
    if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    if (error == 0)
        error = posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, nullDevice, O_RDONLY, 0);
    if (error != 0) return error;
    // Duplicating a descriptor onto itself removes a close-on-exec flag that the host may have set.
    if (hostHasStream(STDERR_FILENO)) {
        return posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDERR_FILENO);
    }
    return posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, nullDevice, O_WRONLY, 0);
}

int SpawnRequest::prepareSignals() {
    sigset_t none;
    sigemptyset(&none);
    // sigfillset() leaves out the two signals that the C library reserves; the child would inherit them as ignored.
    sigset_t all;
    std::memset(&all, 0xFF, sizeof all);
    int error = posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    if (error == 0) error = posix_spawnattr_setsigmask(&attributes_, &none);
    if (error == 0) error = posix_spawnattr_setsigdefault(&attributes_, &all);
    return error;
}

int SpawnRequest::start(pid_t& pid) const {
    if (error_ != 0) return error_;
    // posix_spawn does not write to the strings; the parameter types are historical.
    return posix_spawn(&pid, program_.arguments[0], &actions_, &attributes_,
                       const_cast<char* const*>(program_.arguments),
                       const_cast<char* const*>(program_.environment));
}

}  // namespace kest
