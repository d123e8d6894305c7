#pragma once

#include <cxxabi.h>
#include <pthread.h>

#include "include/zav.h"
#include "kest/CancelSignal.h"

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

// The border of the library: what is caught, and what cancels the thread takes effect behind it. It may do so
// in this function and the exported one that calls it, so neither may own anything.
//
// For a thread that may be cancelled at any time the type comes first and goes last: where setting the state
// carries a cancellation out, glibc up to 2.36 does not tell so to who joins the thread. Nor does it look at the
// state when the signal arrives that was sent before, so this waits, too.
template <class Work>
int guarded(Work work) {
    int state = 0;
    int type = 0;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    if (type == PTHREAD_CANCEL_ASYNCHRONOUS) kest::holdCancelSignal();
    const int code = caught(work);
    pthread_setcancelstate(state, nullptr);
    pthread_setcanceltype(type, nullptr);
    if (type == PTHREAD_CANCEL_ASYNCHRONOUS) kest::releaseCancelSignal();
    return code;
}

}  // namespace zav
