#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace toolkit::quorvis {

// How much of a walk is done, as an estimate that never decreases. May be in memory that processes share. Thread-safe.
//
// Each directory has a share of the walk, which it divides among itself and its subdirectories. Shares of small directories
// are too large. So if the number of names in the tree is known, the mean of both estimates counts.
class WalkProgress {
  public:
    // `names`: how many names the walk will read at most; 0 if that is unknown.
    void expect(std::uint64_t names) { expected_ = names; }
    void add(std::uint64_t names, double share) {
        names_ += names;
        share_ += static_cast<std::uint64_t>(share * kWhole);
    }
    void end() { ended_ = true; }

    // Between 0 and 1.
    double done() const {
        if (ended_) return 1;
        const double byShare = std::min(static_cast<double>(share_) / kWhole, 1.0);
        const std::uint64_t expected = expected_;
        if (expected == 0) return byShare;
        const double byNames = std::min(static_cast<double>(names_) / static_cast<double>(expected), 1.0);
        return (byShare + byNames) / 2;
    }

  private:
    static constexpr double kWhole = 1e15;

    std::atomic<std::uint64_t> expected_ = 0;
    std::atomic<std::uint64_t> names_ = 0;
    std::atomic<std::uint64_t> share_ = 0;  // of kWhole
    std::atomic<bool> ended_ = false;
};

}  // namespace toolkit::quorvis
