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

void Mutex::forked() {
    if (holder_ == pthread_self()) return;
    holder_ = pthread_t();
    // No operation of a mutex makes it free of a thread that is gone.
    new (&mutex_) std::mutex;
}

}  // namespace kest
