#pragma once

#include <cxxabi.h>
#include <poll.h>
#include <pthread.h>

#include <type_traits>

#include "include/zav.h"

namespace zav {

// Returns the result of `work`, ZAV_SUCCESS if it has none, or ZAV_ERROR_MEMORY if it throws. Only memory shortage and
// the host's callback cause exceptions. The forced unwinding of a thread that the callback ends is passed on.
//
// Not inlined: the caller may be cancelled at any instruction, where a function with a handler or a destructor must not
// be left.
template <class Work>
[[gnu::noinline]] int catchAll(Work work) {
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            return ZAV_SUCCESS;
        } else {
            return work();
        }
#ifdef _CXXABI_FORCED_H
    } catch (const abi::__forced_unwind&) {
        throw;
#endif
    } catch (...) {
        return ZAV_ERROR_MEMORY;
    }
}

// Returns only if no cancellation of the thread is in progress. Every cancellation point of the C library does this.
inline void waitForPendingCancellation() {
    poll(nullptr, 0, 0);
}

// The boundary of every exported function: no exception leaves it, and cancellation of the thread is deferred until the
// work is done. Cancellation may then take effect here or in the exported function, so neither may own a resource.
//
// A thread with asynchronous cancellation is cancelled by a signal whose handler ignores the cancellation state. The
// type is therefore set first, after which no further signal is sent, and a signal that is already on its way is waited
// for. The type is restored last: if setting the state carries out a cancellation, glibc up to 2.36 does not report it
// to the thread that joins.
template <class Work>
int guarded(Work work) {
    int state = 0;
    int type = 0;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
    if (type == PTHREAD_CANCEL_ASYNCHRONOUS) waitForPendingCancellation();
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    const int code = catchAll(work);
    pthread_setcancelstate(state, nullptr);
    pthread_setcanceltype(type, nullptr);
    return code;
}

}  // namespace zav
