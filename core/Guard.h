#pragma once

#include <cxxabi.h>
#include <poll.h>
#include <pthread.h>

#include "include/zav.h"

namespace zav {

// What `work` returns, or ZAV_ERROR_MEMORY when anything is thrown. Only running out of memory and the host's
// callback throw. A callback that ends its thread ends it: that must not be caught.
//
// Never inlined: a function that catches something or has anything to clean up cannot be left at any
// instruction, as a thread that may be cancelled at any time has to.
template <class Work>
[[gnu::noinline]] int caught(Work work) {
    try {
        return work();
#ifdef _CXXABI_FORCED_H
    } catch (const abi::__forced_unwind&) {
        throw;
#endif
    } catch (...) {
        return ZAV_ERROR_MEMORY;
    }
}

// The same for work without a code of its own.
template <class Work>
int attempted(Work work) {
    return caught([&work] {
        work();
        return ZAV_SUCCESS;
    });
}

// Any cancellation point does: the C library leaves none while a cancellation of the thread is under way.
inline void awaitCancelSignal() {
    poll(nullptr, 0, 0);
}

// The border of the library: what is caught, and what cancels the thread takes effect behind it. It may do so
// in this function and the exported one that calls it, so neither may own anything.
//
// For a thread that may be cancelled at any time the type comes first and goes last: where setting the state
// carries a cancellation out, glibc up to 2.36 does not tell so to who joins the thread. Such a thread is
// cancelled by a signal, whose handler heeds no state. One that may be on its way is waited for before anything
// begins; with the type set no further one is sent.
template <class Work>
int guarded(Work work) {
    int state = 0;
    int type = 0;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
    if (type == PTHREAD_CANCEL_ASYNCHRONOUS) awaitCancelSignal();
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    const int code = caught(work);
    pthread_setcancelstate(state, nullptr);
    pthread_setcanceltype(type, nullptr);
    return code;
}

}  // namespace zav
