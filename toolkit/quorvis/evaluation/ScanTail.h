#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace toolkit::quorvis {

// What an evaluation is busy with, for another process to see.
class ScanPulse {
  public:
    using Clock = std::chrono::steady_clock;

    std::atomic<std::size_t> begun = 0;  // of the signatures
    std::array<char, 136> guid{};        // of the latest one

    void begin(Clock::time_point end) { end_ = end.time_since_epoch().count(); }
    void end() { end_ = 0; }
    // Whether it is busy with something that ought to have ended so long ago.
    bool isLateBy(Clock::duration time) const {
        const std::int64_t end = end_;
        return end != 0 && Clock::now().time_since_epoch().count() - end > time.count();
    }

  private:
    std::atomic<std::int64_t> end_ = 0;  // ticks of the clock; 0 when nothing has to end
};

// Memory that both processes of a scan see. What the one that evaluates has to tell stands here until it fills a piece
// for the pipe: so telling costs no system call, and nothing is lost when that process ends in the middle.
struct ScanTail {
    ScanPulse pulse;
    std::atomic<std::uint64_t> sent = 0;  // bytes that went through the pipe
    std::atomic<std::size_t> used = 0;    // bytes here that have not
    std::array<char, std::size_t{64} << 10> bytes;
};

}  // namespace toolkit::quorvis
