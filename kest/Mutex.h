#pragma once

#include <pthread.h>

#include <atomic>
#include <mutex>

namespace kest {

// A non-recursive lock whose operations return 0.
class Mutex {
  public:
    int lock();
    int unlock();

    // Call in a child right after fork: releases the lock if another thread held it, as that thread does not exist in
    // the child. A lock held by the forking thread stays held.
    void unlockAfterFork();

  private:
    std::mutex mutex_;
    std::atomic<pthread_t> holder_ = pthread_t();
};

}  // namespace kest
