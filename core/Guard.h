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

// For steps that must not stop a release.
template <class Work>
void quietly(Work work) noexcept {
    guarded([&work] {
        work();
        return 0;
    });
}

}  // namespace zav
