#pragma once

#include <pthread.h>

#include <cstddef>
#include <stdexcept>

namespace zavtest {

// Runs `work` on a thread with a stack of this size. `work` must not throw.
template <class Work>
void runOnStack(std::size_t bytes, Work work) {
    pthread_attr_t attributes;
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<Work*>(argument))();
        return nullptr;
    };
    pthread_attr_init(&attributes);
    const bool started = pthread_attr_setstacksize(&attributes, bytes) == 0 &&
                         pthread_create(&thread, &attributes, run, &work) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) throw std::runtime_error("pthread_create");
    pthread_join(thread, nullptr);
}

}  // namespace zavtest
