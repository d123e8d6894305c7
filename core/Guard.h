#pragma once

#include "include/zav.h"

namespace zav {

// The border of the library: what `work` returns, or ZAV_ERROR_MEMORY when anything is thrown. Only running
// out of memory and the host's callback throw.
template <class Work>
int guarded(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return ZAV_ERROR_MEMORY;
    }
}

// The same for work without a code of its own.
template <class Work>
int attempted(Work work) noexcept {
    return guarded([&work] {
        work();
        return ZAV_SUCCESS;
    });
}

}  // namespace zav
