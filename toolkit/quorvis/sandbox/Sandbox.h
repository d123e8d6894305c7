// The restrictions of the evaluating process, and threads that fit into its memory limit.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <string>

#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Permanently restricts the process to what the evaluation of signatures needs, and its memory to the limit of the
// settings. Returns the restrictions that failed; empty if the sandbox is complete.
std::string enterSandbox(const Settings& settings);

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
