#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace toolkit::quorvis {

// A thread with a small stack.
class HelperThread {
  public:
    static constexpr std::size_t kStackSize = std::size_t{512} << 10;

    // Runs `work`, which throws nothing; not at all where no thread can be had.
    explicit HelperThread(std::function<void()> work);
    // Waits for its end.
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
