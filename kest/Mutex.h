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

    // For a child that was just forked: gives the lock back that another thread held, which the child does not
    // have. What the thread that forked holds, it goes on to hold.
    void forked();

  private:
    std::mutex mutex_;
    std::atomic<pthread_t> holder_ = pthread_t();
};

}  // namespace kest
