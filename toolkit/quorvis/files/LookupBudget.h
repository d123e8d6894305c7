#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// The deadline of what a process is doing, in memory that another process may share.
class SharedDeadline {
  public:
    using Clock = std::chrono::steady_clock;

    void set(Clock::time_point deadline) { ticks_ = deadline.time_since_epoch().count(); }
    void clear() { ticks_ = 0; }
    // Whether there is a deadline and it passed longer ago than `time`.
    bool isLateBy(Clock::duration time) const {
        const std::int64_t ticks = ticks_;
        return ticks != 0 && Clock::now().time_since_epoch().count() - ticks > time.count();
    }

  private:
    std::atomic<std::int64_t> ticks_ = 0;  // of the clock; 0 when there is no deadline
};

// What the lookup of one leaf may cost.
struct LookupLimits {
    std::uint64_t bytesRead = 0;
    std::uint64_t bytesKept = 0;  // of its items
    std::chrono::steady_clock::duration time{};
};

// Thrown when a lookup exceeds its limits.
struct BudgetExceeded : std::exception {
    BudgetExceeded(EventCode eventCode, std::string eventText)
        : code(eventCode), text(std::move(eventText)) {}
    const char* what() const noexcept override { return text.c_str(); }

    EventCode code;
    std::string text;
};

// Counts what lookups cost and ends those that cost too much. Code that reads bytes, keeps results or loops over
// foreign data reports to it.
class LookupBudget {
  public:
    using Clock = std::chrono::steady_clock;

    // `deadline` is that of the whole evaluation.
    explicit LookupBudget(Clock::time_point deadline) : deadline_(deadline), currentDeadline_(deadline) {}

    // Shows the deadline of the current work to another process. REQUIRES: `shared` outlives this.
    void publishDeadline(SharedDeadline& shared) { shared_ = &shared; }

    // Applies the limits of one leaf during its lifetime.
    class LeafScope {
      public:
        LeafScope(LookupBudget& budget, const LookupLimits& limits);
        ~LeafScope();
        LeafScope(const LeafScope&) = delete;
        LeafScope& operator=(const LeafScope&) = delete;

      private:
        LookupBudget& budget_;
    };
    // Applies another deadline during its lifetime, inside or outside of a LeafScope.
    class DeadlineScope {
      public:
        DeadlineScope(LookupBudget& budget, Clock::time_point deadline);
        ~DeadlineScope();
        DeadlineScope(const DeadlineScope&) = delete;
        DeadlineScope& operator=(const DeadlineScope&) = delete;

      private:
        LookupBudget& budget_;
        Clock::time_point before_;
    };

    // These throw BudgetExceeded when a limit is reached. Bytes count inside of a LeafScope only.
    void chargeRead(std::uint64_t bytes);
    void chargeKept(std::uint64_t bytes);
    void checkTime() const;
    // Looks at the clock in some of the calls only. For loops whose single steps are short.
    void checkTimeOccasionally() {
        constexpr unsigned kCallsPerCheck = 256;
        if (++calls_ % kCallsPerCheck == 0) checkTime();
    }

    bool expired() const { return Clock::now() >= deadline_; }
    Clock::time_point deadline() const { return deadline_; }
    // That of the scope that is open, else that of the whole evaluation.
    Clock::time_point currentDeadline() const { return currentDeadline_; }

  private:
    void apply(Clock::time_point deadline);
    void hideDeadline();

    Clock::time_point deadline_;
    Clock::time_point currentDeadline_;
    bool inLeaf_ = false;
    LookupLimits left_;
    SharedDeadline* shared_ = nullptr;
    unsigned calls_ = 0;
};

}  // namespace toolkit::quorvis
