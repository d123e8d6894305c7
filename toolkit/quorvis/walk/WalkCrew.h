#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <mutex>

#include "toolkit/quorvis/sandbox/HelperThread.h"
#include "toolkit/quorvis/walk/DirectoryWalk.h"
#include "toolkit/quorvis/walk/SharedWalk.h"
#include "toolkit/quorvis/walk/WalkFindings.h"

namespace toolkit::quorvis {

// A walk in several threads. It begins in one; the others come when there is much to do, as far as they can be had.
class WalkCrew {
  public:
    // At most so many `jobs`, this thread among them.
    WalkCrew(SharedWalk& shared, unsigned jobs, const WalkFindings& noFindings);

    // All that the threads found. What one of them throws is thrown here.
    WalkFindings run();

  private:
    struct Helper {
        WalkFindings findings;
        std::unique_ptr<HelperThread> thread;
    };
    void lead();
    void startHelpers();
    void help(Helper& helper);
    void workOn(DirectoryWalk& walk);
    void guarded(const std::function<void()>& work);

    SharedWalk& shared_;
    unsigned jobs_;
    const WalkFindings noFindings_;
    WalkFindings findings_;
    std::list<Helper> helpers_;
    std::mutex mutex_;
    std::exception_ptr failure_;
};

}  // namespace toolkit::quorvis
