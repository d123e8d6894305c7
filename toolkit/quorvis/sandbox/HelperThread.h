#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace toolkit::quorvis {

// A thread with a small stack.
class HelperThread {
  public:
    static constexpr std::size_t kStackSize = std::size_t{512} << 10;

    // Runs `work` in the thread. Does nothing if no thread can be created. REQUIRES: `work` does not throw.
    explicit HelperThread(std::function<void()> work);
    // Waits until `work` returns.
    ~HelperThread();
    HelperThread(const HelperThread&) = delete;
    HelperThread& operator=(const HelperThread&) = delete;

    bool started() const { return started_; }

  private:
    std::function<void()> work_;
    pthread_t thread_{};
    bool started_ = false;
};

}  // namespace toolkit::quorvis
