#include "tests/kest/Faults.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mman.h>
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

// Shared with processes that have only a copy of the memory.
std::atomic<int>& shared() {
    void* const block =
        mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (block) std::atomic<int>(0);
}
std::atomic<int>& failingTimes = shared();

std::function<void()> beforeClone;

std::atomic<bool> allocationsAreCounted = false;
std::atomic<int> allocationsLeft = 0;

// The error with which this call must fail; 0 if it must not.
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

BeforeClone::BeforeClone(std::function<void()> action) {
    beforeClone = std::move(action);
}

BeforeClone::~BeforeClone() {
    beforeClone = nullptr;
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

// The linker's option --wrap requires these reserved names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

// Wraps a function that returns -1 and sets errno.
#define SETS_ERRNO(function, parameters, arguments)         \
    int __real_##function parameters;                       \
    int __wrap_##function parameters {                      \
        const int error = errorOf(#function);               \
        if (error == 0) return __real_##function arguments; \
        errno = error;                                      \
        return -1;                                          \
    }

// Wraps a function that returns an error number.
#define RETURNS_ERROR(function, parameters, arguments)           \
    int __real_##function parameters;                            \
    int __wrap_##function parameters {                           \
        const int error = errorOf(#function);                    \
        return error == 0 ? __real_##function arguments : error; \
    }

SETS_ERRNO(pipe2, (int* ends, int flags), (ends, flags))

SETS_ERRNO(getppid, (), ())
SETS_ERRNO(poll, (pollfd * events, nfds_t count, int timeout), (events, count, timeout))

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

#undef SETS_ERRNO
#undef RETURNS_ERROR

ssize_t __real_read(int descriptor, void* block, std::size_t size);
ssize_t __wrap_read(int descriptor, void* block, std::size_t size) {
    const int error = errorOf("read");
    if (error == 0) return __real_read(descriptor, block, size);
    errno = error;
    return -1;
}

int __real_clone(int (*function)(void*), void* stack, int flags, void* argument);
int __wrap_clone(int (*function)(void*), void* stack, int flags, void* argument) {
    if (kest::test::beforeClone) kest::test::beforeClone();
    const int error = errorOf("clone");
    if (error == 0) return __real_clone(function, stack, flags, argument);
    errno = error;
    return -1;
}

// Supports only calls without a mode, as the library makes them.
int __real_open(const char* path, int flags);
int __wrap_open(const char* path, int flags) {
    const int error = errorOf("open");
    if (error == 0) return __real_open(path, flags);
    errno = error;
    return -1;
}

// The C++ library also waits with this function. All but two system calls are passed on unchanged.
long __real_syscall(long number, long a, long b, long c, long d, long e, long f);
long __wrap_syscall(long number, long a, long b, long c, long d, long e, long f) {
    int error = 0;
    if (number == SYS_waitid) error = errorOf("waitid");
    if (number == SYS_read) error = errorOf("read");
    if (error == 0) return __real_syscall(number, a, b, c, d, e, f);
    errno = error;
    return -1;
}
}
// NOLINTEND(bugprone-reserved-identifier)
