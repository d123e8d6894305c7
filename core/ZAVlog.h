#pragma once

#include <cstdarg>
#include <string>

#include "include/zav.h"

namespace zav {

// Delivers messages to the host's callback. All loggers of the process share one lock, which is held while the callback
// runs, so the host is never called by two threads at once. The lock is released when the callback throws.
//
// Formats are printf formats; "%S" takes wide text. A message that is empty or cannot be formatted is dropped.
class ZAVlog {
  public:
    // With a null callback the logger delivers nothing. userData is passed to the callback and never dereferenced.
    constexpr ZAVlog(int componentId, ZAVlogCallback callback, void* userData)
        : callback_(callback), userData_(userData), componentId_(componentId) {}
    // Loggers that deliver nothing.
    explicit ZAVlog(int componentId);
    ZAVlog();
    virtual ~ZAVlog() = default;
    ZAVlog(const ZAVlog&) = delete;
    ZAVlog& operator=(const ZAVlog&) = delete;

    // Level 0: errors and messages that every host should show.
    void traceMIN(const char* function, const char* format, ...);
    // Level 1: notable events.
    void traceMID(const char* function, const char* format, ...);
    // Level 2: detailed trace.
    void traceMAX(const char* function, const char* format, ...);
    void trace(int level, const char* function, const char* format, ...);

    // Logs the reason of a failure at level 0 unless it is empty, and clears it. REQUIRES: printable ASCII, which is
    // never dropped in any locale.
    void reportFailure(const char* function, std::string& failure);

    // Whether messages reach a callback. Lets callers skip messages that are costly to compose.
    bool hasCallback() const { return callback_ != nullptr; }

    // Delivers one message. REQUIRES: the shared lock is held.
    void vsprintf(int level, const char* function, const char* format, va_list arguments);

    // The shared lock: operation 1 acquires it, any other releases it. Returns 0.
    static int mutex(int operation);

  private:
    void deliver(int level, const char* function, const char* format, va_list arguments);

    ZAVlogCallback callback_ = nullptr;
    void* userData_ = nullptr;
    int componentId_ = 0;
};

// Returns the logger, or one that delivers nothing if it is null.
ZAVlog& orSilent(ZAVlog* log);

}  // namespace zav
