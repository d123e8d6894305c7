#include "tests/kest/Faults.h"

#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>
#include <utility>

namespace kest::test {

namespace {

std::string failing;
std::atomic<int> failingError = 0;
std::atomic<int> failingTimes = 0;

std::atomic<bool> allocationsAreCounted = false;
std::atomic<int> allocationsLeft = 0;

// The error with which this call has to fail, else 0.
int errorOf(const char* function) {
    if (failingTimes <= 0 || failing != function) return 0;
    --failingTimes;
    return failingError;
}

}  // namespace

Fault::Fault(std::string function, int error, int times) {
    failing = std::move(function);
    failingError = error;
    failingTimes = times;
}

Fault::~Fault() {
    failingTimes = 0;
}

bool Fault::happened() {
    return failingTimes == 0;
}

AllocationFault::AllocationFault(int successes) {
    allocationsLeft = successes;
    allocationsAreCounted = true;
}

AllocationFault::~AllocationFault() {
    allocationsAreCounted = false;
}

bool AllocationFault::happened() {
    return allocationsLeft < 0;
}

namespace {

void* allocated(std::size_t size) {
    if (allocationsAreCounted && allocationsLeft-- == 0) throw std::bad_alloc();
    if (void* const block = std::malloc(size)) return block;
    throw std::bad_alloc();
}

}  // namespace

}  // namespace kest::test

void* operator new(std::size_t size) {
    return kest::test::allocated(size);
}
void* operator new[](std::size_t size) {
    return kest::test::allocated(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

using kest::test::errorOf;

// The linker asks for these reserved names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

// A function that returns -1 and sets errno.
#define SETS_ERRNO(function, parameters, arguments)         \
    int __real_##function parameters;                       \
    int __wrap_##function parameters {                      \
        const int error = errorOf(#function);               \
        if (error == 0) return __real_##function arguments; \
        errno = error;                                      \
        return -1;                                          \
    }

// A function that returns the number of the error.
#define RETURNS_ERROR(function, parameters, arguments)           \
    int __real_##function parameters;                            \
    int __wrap_##function parameters {                           \
        const int error = errorOf(#function);                    \
        return error == 0 ? __real_##function arguments : error; \
    }

SETS_ERRNO(pipe2, (int* ends, int flags), (ends, flags))
SETS_ERRNO(waitid, (idtype_t kind, id_t id, siginfo_t* info, int options), (kind, id, info, options))
SETS_ERRNO(clone, (int (*function)(void*), void* stack, int flags, void* argument),
           (function, stack, flags, argument))

SETS_ERRNO(getppid, (), ())

RETURNS_ERROR(posix_spawn,
              (pid_t * pid, const char* path, const posix_spawn_file_actions_t* actions,
               const posix_spawnattr_t* attributes, char* const* arguments, char* const* environment),
              (pid, path, actions, attributes, arguments, environment))
RETURNS_ERROR(posix_spawn_file_actions_adddup2, (posix_spawn_file_actions_t * actions, int from, int to),
              (actions, from, to))
RETURNS_ERROR(posix_spawn_file_actions_addclosefrom_np, (posix_spawn_file_actions_t * actions, int from),
              (actions, from))
RETURNS_ERROR(posix_spawn_file_actions_addopen,
              (posix_spawn_file_actions_t * actions, int number, const char* path, int flags, mode_t mode),
              (actions, number, path, flags, mode))
RETURNS_ERROR(posix_spawnattr_setflags, (posix_spawnattr_t * attributes, short flags), (attributes, flags))
RETURNS_ERROR(pthread_create,
              (pthread_t * thread, const pthread_attr_t* attributes, void* (*function)(void*),
               void* argument),
              (thread, attributes, function, argument))

#undef SETS_ERRNO
#undef RETURNS_ERROR

ssize_t __real_read(int descriptor, void* block, std::size_t size);
ssize_t __wrap_read(int descriptor, void* block, std::size_t size) {
    const int error = errorOf("read");
    if (error == 0) return __real_read(descriptor, block, size);
    errno = error;
    return -1;
}

// Of this and of ioctl only the calls that the library makes: one argument follows, as wide as a pointer.
int __real_fcntl(int descriptor, int command, void* argument);
int __wrap_fcntl(int descriptor, int command, void* argument) {
    const int error = command == F_DUPFD_CLOEXEC ? errorOf("fcntl") : 0;
    if (error == 0) return __real_fcntl(descriptor, command, argument);
    errno = error;
    return -1;
}

// The C++ library waits by it, too: all calls but one go through unchanged.
long __real_syscall(long number, long a, long b, long c, long d, long e, long f);
long __wrap_syscall(long number, long a, long b, long c, long d, long e, long f) {
    const int error = number == SYS_pidfd_open ? errorOf("pidfd_open") : 0;
    if (error == 0) return __real_syscall(number, a, b, c, d, e, f);
    errno = error;
    return -1;
}

// Telling nothing is what the kernel does about a process that is just being taken away.
int __real_ioctl(int descriptor, unsigned long request, void* argument);
int __wrap_ioctl(int descriptor, unsigned long request, void* argument) {
    const int error = errorOf("ioctl");
    if (error == 0) return __real_ioctl(descriptor, request, argument);
    if (error == EAGAIN) {
        *static_cast<unsigned long long*>(argument) = 0;
        return 0;
    }
    errno = error;
    return -1;
}
}
// NOLINTEND(bugprone-reserved-identifier)
