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
    // With glibc these two only fill the structures, and the lists are freed by destroying them.
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
    error_ = prepareDescriptors(output);
    if (error_ == 0) error_ = prepareSignals();
}

SpawnRequest::~SpawnRequest() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
}

// Standard input comes last: then the descriptors that were closed before make room for it in a host that has
// reached its limit. A child without a standard error would get the first file that it opens as one, hence
// the null device.
int SpawnRequest::prepareDescriptors(const Descriptor& output) {
    int error = posix_spawn_file_actions_adddup2(&actions_, output.number(), STDOUT_FILENO);
    if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    if (error == 0)
        error = posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, nullDevice, O_RDONLY, 0);
    if (error != 0) return error;
    // Onto itself: no longer close-on-exec, if the host had made it so.
    if (hostHasStream(STDERR_FILENO)) {
        return posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDERR_FILENO);
    }
    return posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, nullDevice, O_WRONLY, 0);
}

int SpawnRequest::prepareSignals() {
    sigset_t none;
    sigemptyset(&none);
    // Not sigfillset: it leaves out the two signals that the C library keeps for itself, and the child would
    // be born with those ignored.
    sigset_t all;
    std::memset(&all, 0xFF, sizeof all);
    int error = posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    if (error == 0) error = posix_spawnattr_setsigmask(&attributes_, &none);
    if (error == 0) error = posix_spawnattr_setsigdefault(&attributes_, &all);
    return error;
}

int SpawnRequest::start(pid_t& pid) const {
    if (error_ != 0) return error_;
    // posix_spawn takes the strings as char* for the sake of old programs; it does not write to them.
    return posix_spawn(&pid, program_.arguments[0], &actions_, &attributes_,
                       const_cast<char* const*>(program_.arguments),
                       const_cast<char* const*>(program_.environment));
}

}  // namespace kest
