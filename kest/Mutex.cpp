#include "kest/Mutex.h"

#include <new>

namespace kest {

int Mutex::lock() {
    mutex_.lock();
    holder_ = pthread_self();
    return 0;
}

int Mutex::unlock() {
    holder_ = pthread_t();
    mutex_.unlock();
    return 0;
}

void Mutex::unlockAfterFork() {
    if (holder_ == pthread_self()) return;
    holder_ = pthread_t();
    // A mutex cannot be unlocked on behalf of a thread that no longer exists.
    new (&mutex_) std::mutex;
}

}  // namespace kest
