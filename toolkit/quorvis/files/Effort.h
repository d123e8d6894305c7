#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>

#include "toolkit/quorvis/evaluation/ScanTail.h"
#include "toolkit/quorvis/leaves/Leaf.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// What looking one leaf up may cost. A leaf that needs more is unknown.
struct Contract {
    std::uint64_t bytesRead = 0;
    std::uint64_t bytesKept = 0;  // of its items
    std::chrono::steady_clock::duration time{};
};
Contract contractOf(LeafKind kind, const Settings& settings);

// Thrown by whoever exceeds a contract.
struct OverContract : std::exception {
    OverContract(EventCode eventCode, std::string eventText) : code(eventCode), text(std::move(eventText)) {}
    const char* what() const noexcept override { return text.c_str(); }

    EventCode code;
    std::string text;
};

// Counts what is done for a leaf. Whoever reads bytes, keeps something or goes through much calls it on the way.
class Effort {
  public:
    using Clock = std::chrono::steady_clock;

    // `end` is that of the time for all leaves.
    Effort(const Settings& settings, Clock::time_point end)
        : settings_(settings), end_(end), endOfLeaf_(end) {}

    // Lets another process see when what is being done must end.
    void showIn(ScanPulse& pulse) { pulse_ = &pulse; }

    // The work for one leaf, while this lives.
    class OfLeaf {
      public:
        OfLeaf(Effort& effort, LeafKind kind);
        ~OfLeaf();
        OfLeaf(const OfLeaf&) = delete;
        OfLeaf& operator=(const OfLeaf&) = delete;

      private:
        Effort& effort_;
    };
    // Something within it, or beside all leaves, that takes its own time.
    class Until {
      public:
        Until(Effort& effort, Clock::time_point end);
        ~Until();
        Until(const Until&) = delete;
        Until& operator=(const Until&) = delete;

      private:
        Effort& effort_;
        Clock::time_point before_;
    };

    // Each throws OverContract when that is too much.
    void read(std::uint64_t bytes);
    void keep(std::uint64_t bytes);
    void watchTime() const;
    // Does so for those who do little each time.
    void watchTimeNowAndThen() {
        constexpr unsigned kBetweenLooks = 256;
        if (++calls_ % kBetweenLooks == 0) watchTime();
    }

    bool late() const { return Clock::now() >= end_; }
    Clock::time_point end() const { return end_; }
    // Of the time for what is being done.
    Clock::time_point endOfLeaf() const { return endOfLeaf_; }

  private:
    void show(Clock::time_point end);

    const Settings& settings_;
    Clock::time_point end_;
    Clock::time_point endOfLeaf_;
    bool inLeaf_ = false;
    Contract left_;
    ScanPulse* pulse_ = nullptr;
    unsigned calls_ = 0;
};

// Keeps an item of a leaf, if that may have so much.
void keepItem(Effort& effort, LeafResult& result, Item item);

}  // namespace toolkit::quorvis
