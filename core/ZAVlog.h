#pragma once

#include <cstdarg>
#include <string>

#include "include/zav.h"

namespace zav {

// Carries messages to the host's callback. One lock serves all loggers of the process, so the host is never
// called by two threads at once; it is held while the callback runs, and is free again when the callback
// throws.
//
// Formats are printf formats; "%S" takes wide text. A message that is empty or cannot be formatted is
// dropped.
class ZAVlog {
  public:
    // A null callback makes a logger that does nothing. userData is handed to the callback and never looked
    // at.
    constexpr ZAVlog(int componentId, ZAVlogCallback callback, void* userData)
        : callback_(callback), userData_(userData), componentId_(componentId) {}
    // Loggers that deliver nothing.
    explicit ZAVlog(int componentId);
    ZAVlog();
    virtual ~ZAVlog() = default;
    ZAVlog(const ZAVlog&) = delete;
    ZAVlog& operator=(const ZAVlog&) = delete;

    void traceMIN(const char* function, const char* format,
                  ...);  // level 0: errors, and what the host must see
    void traceMID(const char* function, const char* format, ...);  // level 1: notable events
    void traceMAX(const char* function, const char* format, ...);  // level 2: the detailed trace
    void trace(int level, const char* function, const char* format, ...);

    // Tells at level 0 why something failed, if there is anything to tell, and empties it. REQUIRES: printable
    // ASCII, which no locale drops.
    void tell(const char* function, std::string& trouble);

    // Whether there is a callback that messages go to; for what is costly to put together.
    bool isHeard() const { return callback_ != nullptr; }

    // Delivers one message. REQUIRES: the shared lock is held.
    void vsprintf(int level, const char* function, const char* format, va_list arguments);

    // The shared lock: 1 takes it, any other operation gives it back. Returns 0.
    static int mutex(int operation);

  private:
    void deliver(int level, const char* function, const char* format, va_list arguments);

    ZAVlogCallback callback_ = nullptr;
    void* userData_ = nullptr;
    int componentId_ = 0;
};

// The logger itself, or one that delivers nothing for null.
ZAVlog& orSilent(ZAVlog* log);

}  // namespace zav
