#include "tests/support/Faults.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <utility>

namespace {

struct Plan {
    std::string function;
    int error = 0;
    int nth = 0;
    int times = 0;
    std::string path;
};

struct Counts {
    std::atomic<int> calls = 0;
    std::atomic<int> failures = 0;
    std::atomic<int> callsBehind = 0;
};

// Shared with processes that have only a copy of the memory.
Counts* sharedCounts() {
    void* const block =
        mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return new (block) Counts;
}

Plan plan;
Counts& counts = *sharedCounts();
std::atomic<bool> planned = false;
std::map<std::FILE*, std::string> opened;
std::function<void()> beforeClone;
thread_local std::size_t readUntilNow = 0;

// The error with which this call must fail; 0 if it must not. A call that does not fail allocates nothing.
int errorOf(const char* function, const char* path = "") {
    if (!planned || plan.function != function) return 0;
    if (counts.failures != 0) ++counts.callsBehind;
    const int call = ++counts.calls;
    const bool due = call >= plan.nth && call - plan.nth < plan.times;
    if (plan.nth != zavtest::Fault::kEvery && !due) return 0;
    ++counts.failures;
    plan.path = path;
    return plan.error;
}

const char* pathOf(std::FILE* file) {
    const auto found = opened.find(file);
    return found == opened.end() ? "" : found->second.c_str();
}

// The result of a call that returns -1 and sets errno on error.
template <class Real>
auto orMinusOne(const char* function, const char* path, Real real) -> decltype(real()) {
    const int error = errorOf(function, path);
    if (error == 0) return real();
    errno = error;
    return -1;
}

// The result of a call that returns an error number.
template <class Real>
int orError(const char* function, Real real) {
    const int error = errorOf(function);
    return error == 0 ? real() : error;
}

}  // namespace

namespace zavtest {

Fault::Fault(const std::string& function, int error, int nth, int times) {
    plan = {function, error, nth, times, ""};
    counts.calls = counts.failures = counts.callsBehind = 0;
    planned = true;
}

Fault::~Fault() {
    planned = false;
}

bool Fault::happened() const {
    return counts.failures >= plan.times;
}

int Fault::failures() const {
    return counts.failures;
}

int Fault::callsBehind() const {
    return counts.callsBehind;
}

std::string Fault::path() const {
    return plan.path;
}

BeforeClone::BeforeClone(std::function<void()> action) {
    beforeClone = std::move(action);
}

BeforeClone::~BeforeClone() {
    beforeClone = nullptr;
}

std::size_t bytesRead() {
    return readUntilNow;
}

}  // namespace zavtest

// The linker's option --wrap requires these reserved names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode) {
    errno = errorOf("fopen", path);
    if (std::strcmp(path, "/etc/zav/zav.ini") == 0 && errno == 0) errno = ENOENT;
    if (errno != 0) return nullptr;
    std::FILE* const file = __real_fopen(path, mode);
    if (file != nullptr) opened[file] = path;
    return file;
}

// Closes the stream also when it fails, like the real function.
int __real_fclose(std::FILE* file);
int __wrap_fclose(std::FILE* file) {
    const int error = errorOf("fclose", pathOf(file));
    opened.erase(file);
    const int result = __real_fclose(file);
    if (error == 0) return result;
    errno = error;
    return EOF;
}

std::size_t __real_fwrite(const void* block, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __wrap_fwrite(const void* block, std::size_t size, std::size_t count, std::FILE* file) {
    errno = errorOf("fwrite", pathOf(file));
    return errno == 0 ? __real_fwrite(block, size, count, file) : count / 2;
}

std::size_t __real_fread(void* block, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __wrap_fread(void* block, std::size_t size, std::size_t count, std::FILE* file) {
    errno = errorOf("fread", pathOf(file));
    return errno == 0 ? __real_fread(block, size, count, file) : 0;
}

// The mode is passed on whether or not there is one.
int __real_open(const char* path, int flags, mode_t mode);
int __wrap_open(const char* path, int flags, mode_t mode) {
    return orMinusOne("open", path, [=] { return __real_open(path, flags, mode); });
}

ssize_t __real_read(int descriptor, void* block, std::size_t size);
ssize_t __wrap_read(int descriptor, void* block, std::size_t size) {
    struct stat info = {};
    fstat(descriptor, &info);
    const char* const kind = S_ISFIFO(info.st_mode) ? "pipe" : "file";
    const ssize_t count = orMinusOne("read", kind, [=] { return __real_read(descriptor, block, size); });
    if (count > 0) readUntilNow += static_cast<std::size_t>(count);
    return count;
}

int __real_access(const char* path, int mode);
int __wrap_access(const char* path, int mode) {
    // The error EEXIST simulates a name that is taken.
    const int error = errorOf("access", path);
    if (error == EEXIST) return 0;
    errno = error;
    return error == 0 ? __real_access(path, mode) : -1;
}

int __real_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode) {
    return orMinusOne("mkdir", path, [=] { return __real_mkdir(path, mode); });
}

int __real_chmod(const char* path, mode_t mode);
int __wrap_chmod(const char* path, mode_t mode) {
    return orMinusOne("chmod", path, [=] { return __real_chmod(path, mode); });
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
    return orMinusOne("unlink", path, [=] { return __real_unlink(path); });
}

int __real_rmdir(const char* path);
int __wrap_rmdir(const char* path) {
    return orMinusOne("rmdir", path, [=] { return __real_rmdir(path); });
}

int __real_pipe2(int* ends, int flags);
int __wrap_pipe2(int* ends, int flags) {
    return orMinusOne("pipe2", "", [=] { return __real_pipe2(ends, flags); });
}

// The C++ library also waits with this function. Calls other than these two are passed on.
long __real_syscall(long number, long a, long b, long c, long d, long e, long f);
long __wrap_syscall(long number, long a, long b, long c, long d, long e, long f) {
    const auto real = [=] { return __real_syscall(number, a, b, c, d, e, f); };
    if (number == SYS_read) return orMinusOne("SYS_read", "", real);
    if (number == SYS_waitid) return orMinusOne("SYS_waitid", "", real);
    return real();
}

pid_t __real_getppid();
pid_t __wrap_getppid() {
    return orMinusOne("getppid", "", [] { return __real_getppid(); });
}

int __real_poll(pollfd* events, nfds_t count, int timeout);
int __wrap_poll(pollfd* events, nfds_t count, int timeout) {
    return orMinusOne("poll", "", [=] { return __real_poll(events, count, timeout); });
}

int __real_clone(int (*function)(void*), void* stack, int flags, void* argument);
int __wrap_clone(int (*function)(void*), void* stack, int flags, void* argument) {
    if (beforeClone) beforeClone();
    return orMinusOne("clone", "", [=] { return __real_clone(function, stack, flags, argument); });
}

// Supports only calls with one argument as wide as a pointer, as the library makes them.
int __real_fcntl(int descriptor, int command, void* argument);
int __wrap_fcntl(int descriptor, int command, void* argument) {
    return orMinusOne("fcntl", "", [=] { return __real_fcntl(descriptor, command, argument); });
}

int __real_posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments, char* const* environment);
int __wrap_posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments,
                       char* const* environment) {
    return orError("posix_spawn", [=] {
        return __real_posix_spawn(pid, path, actions, attributes, arguments, environment);
    });
}

int __real_posix_spawn_file_actions_adddup2(posix_spawn_file_actions_t* actions, int from, int to);
int __wrap_posix_spawn_file_actions_adddup2(posix_spawn_file_actions_t* actions, int from, int to) {
    return orError("posix_spawn_file_actions_adddup2",
                   [=] { return __real_posix_spawn_file_actions_adddup2(actions, from, to); });
}

int __real_posix_spawn_file_actions_addclosefrom_np(posix_spawn_file_actions_t* actions, int from);
int __wrap_posix_spawn_file_actions_addclosefrom_np(posix_spawn_file_actions_t* actions, int from) {
    return orError("posix_spawn_file_actions_addclosefrom_np",
                   [=] { return __real_posix_spawn_file_actions_addclosefrom_np(actions, from); });
}

int __real_posix_spawn_file_actions_addopen(posix_spawn_file_actions_t* actions, int number, const char* path,
                                            int flags, mode_t mode);
int __wrap_posix_spawn_file_actions_addopen(posix_spawn_file_actions_t* actions, int number, const char* path,
                                            int flags, mode_t mode) {
    return orError("posix_spawn_file_actions_addopen", [=] {
        return __real_posix_spawn_file_actions_addopen(actions, number, path, flags, mode);
    });
}

int __real_posix_spawnattr_setflags(posix_spawnattr_t* attributes, short flags);
int __wrap_posix_spawnattr_setflags(posix_spawnattr_t* attributes, short flags) {
    return orError("posix_spawnattr_setflags",
                   [=] { return __real_posix_spawnattr_setflags(attributes, flags); });
}
}
// NOLINTEND(bugprone-reserved-identifier)
