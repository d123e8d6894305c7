#include "core/ZAVlog.h"

#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "core/File.h"
#include "kest/Malloced.h"
#include "kest/Mutex.h"

namespace zav {

namespace {

constexpr std::size_t kSpare = 5;

// Ready before the first use: a child that was forked while a thread made it would wait for that for ever.
kest::Mutex& sharedMutex() {
    static constinit kest::Mutex shared;
    return shared;
}

// Initialised at load time for the same reason.
constinit ZAVlog silentLog(0, nullptr, nullptr);

// A fork does not wait for the lock, as a callback may take its time or wait for the thread that forks. So the
// child frees it of a thread that it does not have.
[[maybe_unused]] const int atForks = pthread_atfork(nullptr, nullptr, [] { sharedMutex().forked(); });

class Locked {
  public:
    Locked() { ZAVlog::mutex(1); }
    ~Locked() { ZAVlog::mutex(0); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

// Ends the use of variable arguments also when a callback throws.
class Ended {
  public:
    explicit Ended(va_list& arguments) : arguments_(arguments) {}
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the owner began them
    ~Ended() { va_end(arguments_); }
    Ended(const Ended&) = delete;
    Ended& operator=(const Ended&) = delete;

  private:
    va_list& arguments_;
};

// The length of the formatted text, found by formatting it into the null device; negative when that fails. It
// consumes the arguments.
int measure(const char* format, va_list arguments) {
    const File nullDevice = openFileOrNull("/dev/null", "we");
    if (nullDevice == nullptr) return -1;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller began them
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
    const Ended ended(arguments);
    deliver(0, function, format, arguments);
}

void ZAVlog::traceMID(const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const Ended ended(arguments);
    deliver(1, function, format, arguments);
}

void ZAVlog::traceMAX(const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const Ended ended(arguments);
    deliver(2, function, format, arguments);
}

void ZAVlog::trace(int level, const char* function, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const Ended ended(arguments);
    deliver(level, function, format, arguments);
}

void ZAVlog::tell(const char* function, std::string& trouble) {
    const std::string told = std::exchange(trouble, {});
    if (!told.empty()) traceMIN(function, "%s", told.c_str());
}

void ZAVlog::deliver(int level, const char* function, const char* format, va_list arguments) {
    const Locked locked;
    vsprintf(level, function, format, arguments);
}

// The text is measured in the null device and then formatted into a buffer of its size. It is delivered only
// when both passes agree, so the host never sees half a message.
void ZAVlog::vsprintf(int level, const char* function, const char* format, va_list arguments) {
    if (format == nullptr || callback_ == nullptr) return;
    va_list measured;
    va_copy(measured, arguments);
    const int length = measure(format, measured);
    va_end(measured);
    if (length < 1) return;
    const auto size = static_cast<std::size_t>(length) + kSpare;
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
