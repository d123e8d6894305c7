#include "core/ZAVlog.h"

#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "core/StdioFile.h"
#include "kest/Malloced.h"
#include "kest/Mutex.h"

namespace zav {

namespace {

constexpr std::size_t kSpareBytes = 5;

// Initialised at compile time: a child that is forked during a first-use initialisation would wait for it for ever.
kest::Mutex& sharedMutex() {
    static constinit kest::Mutex shared;
    return shared;
}

// Delivers nothing. Initialised at compile time for the same reason.
constinit ZAVlog silentLog(0, nullptr, nullptr);

// A fork does not wait for the lock, as a callback may take long or wait for the forking thread. Instead the child
// releases a lock that was held by a thread of its parent.
[[maybe_unused]] const int atForks =
    pthread_atfork(nullptr, nullptr, [] { sharedMutex().unlockAfterFork(); });

class LogLock {
  public:
    LogLock() { ZAVlog::mutex(1); }
    ~LogLock() { ZAVlog::mutex(0); }
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;
};

// Calls va_end even if a callback throws.
class VaListEnd {
  public:
    explicit VaListEnd(va_list& arguments) : arguments_(arguments) {}
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has called va_start
    ~VaListEnd() { va_end(arguments_); }
    VaListEnd(const VaListEnd&) = delete;
    VaListEnd& operator=(const VaListEnd&) = delete;

  private:
    va_list& arguments_;
};

// Formats the text into the null device and returns its length; negative on error. Consumes the arguments.
int formattedLength(const char* format, va_list arguments) {
    const StdioFile nullDevice = openFileOrNull("/dev/null", "we");
    if (nullDevice == nullptr) return -1;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has called va_start
    return std::vfprintf(nullDevice.get(), format, arguments);
}

}  // namespace

ZAVlog::ZAVlog(int componentId) {
    const ZAVlog separate(componentId, nullptr, nullptr);
}

ZAVlog::ZAVlog() {
    const ZAVlog separate(0, nullptr, nullptr);
}

void ZAVlog::traceMIN(const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const VaListEnd end(arguments);
    deliver(0, function, format, arguments);
}

void ZAVlog::traceMID(const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const VaListEnd end(arguments);
    deliver(1, function, format, arguments);
}

void ZAVlog::traceMAX(const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const VaListEnd end(arguments);
    deliver(2, function, format, arguments);
}

void ZAVlog::trace(int level, const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const VaListEnd end(arguments);
    deliver(level, function, format, arguments);
}

void ZAVlog::reportFailure(const char* function, std::string& failure) {
    const std::string told = std::exchange(failure, {});
    if (!told.empty()) traceMIN(function, "%s", told.c_str());
}

void ZAVlog::deliver(int level, const char* function, const char* format, va_list arguments) {
    const LogLock lock;
    vsprintf(level, function, format, arguments);
}

// Measures the text and then formats it into a buffer of that size. The message is delivered only if both passes agree,
// so the host never receives a truncated one.
void ZAVlog::vsprintf(int level, const char* function, const char* format, va_list arguments) {
    if (format == nullptr || callback_ == nullptr) return;
    va_list measured;
    va_copy(measured, arguments);
    const int length = formattedLength(format, measured);
    va_end(measured);
    if (length < 1) return;
    const auto size = static_cast<std::size_t>(length) + kSpareBytes;
    const kest::Malloced<char> message(static_cast<char*>(std::malloc(size)));
    if (message == nullptr) return;
    if (std::vsnprintf(message.get(), size, format, arguments) != length) return;
    callback_(level, componentId_, userData_, function, message.get());
}

int ZAVlog::mutex(int operation) {
    return operation == 1 ? sharedMutex().lock() : sharedMutex().unlock();
}

ZAVlog& orSilent(ZAVlog* log) {
    return log != nullptr ? *log : silentLog;
}

}  // namespace zav
