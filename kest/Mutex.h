#pragma once

#include <mutex>

namespace kest {

// A lock that is not recursive: a thread that takes it twice waits for itself.
class Mutex {
  public:
    // Both return 0.
    int lock();
    int unlock();

  private:
    std::mutex mutex_;
};

}  // namespace kest
