#include "toolkit/quorvis/walk/WalkShares.h"

#include <utility>

namespace toolkit::quorvis {

void WalkShares::countWanted() {
    wanted_.store(static_cast<int>(waiting_) - static_cast<int>(shares_.size()), std::memory_order_relaxed);
}

// Stays so: those that were told leave one by one.
bool WalkShares::allDone() {
    done_ = done_ || (waiting_ == walks_ && shares_.empty());
    return done_;
}

void WalkShares::join() {
    const std::lock_guard lock(mutex_);
    ++walks_;
}

void WalkShares::leave() {
    const std::lock_guard lock(mutex_);
    --walks_;
    changed_.notify_all();
}

void WalkShares::give(WalkShare share) {
    const std::lock_guard lock(mutex_);
    shares_.push_back(std::move(share));
    countWanted();
    changed_.notify_one();
}

std::optional<WalkShare> WalkShares::take() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    countWanted();
    if (allDone()) changed_.notify_all();
    changed_.wait(lock, [this] { return !shares_.empty() || allDone(); });
    if (shares_.empty()) return std::nullopt;
    WalkShare share = std::move(shares_.front());
    shares_.pop_front();
    --waiting_;
    countWanted();
    return share;
}

}  // namespace toolkit::quorvis
