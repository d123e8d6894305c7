#include "toolkit/quorvis/files/LookupBudget.h"

#include <algorithm>

namespace toolkit::quorvis {

namespace {

// False when fewer bytes are left.
bool take(std::uint64_t& left, std::uint64_t bytes) {
    const bool enough = bytes <= left;
    left -= std::min(left, bytes);
    return enough;
}

}  // namespace

LookupBudget::LeafScope::LeafScope(LookupBudget& budget, const LookupLimits& limits) : budget_(budget) {
    budget_.left_ = limits;
    budget_.inLeaf_ = true;
    budget_.apply(std::min(Clock::now() + limits.time, budget_.deadline_));
}

LookupBudget::LeafScope::~LeafScope() {
    budget_.inLeaf_ = false;
    budget_.currentDeadline_ = budget_.deadline_;
    budget_.hideDeadline();
}

LookupBudget::DeadlineScope::DeadlineScope(LookupBudget& budget, Clock::time_point deadline)
    : budget_(budget), before_(budget.currentDeadline_) {
    budget_.apply(deadline);
}

LookupBudget::DeadlineScope::~DeadlineScope() {
    budget_.apply(before_);
    if (!budget_.inLeaf_) budget_.hideDeadline();
}

void LookupBudget::apply(Clock::time_point deadline) {
    currentDeadline_ = deadline;
    if (shared_ != nullptr) shared_->set(deadline);
}

void LookupBudget::hideDeadline() {
    if (shared_ != nullptr) shared_->clear();
}

void LookupBudget::chargeRead(std::uint64_t bytes) {
    checkTime();
    if (inLeaf_ && !take(left_.bytesRead, bytes))
        throw BudgetExceeded(EventCode::LimitBytes,
                             "more bytes would have to be read than one leaf may read");
}

void LookupBudget::chargeKept(std::uint64_t bytes) {
    if (inLeaf_ && !take(left_.bytesKept, bytes))
        throw BudgetExceeded(EventCode::LimitBytes, "more was found than one leaf may keep");
}

void LookupBudget::checkTime() const {
    const Clock::time_point now = Clock::now();
    if (now >= deadline_) throw BudgetExceeded(EventCode::Deadline, "the time for the evaluation is over");
    if (now >= currentDeadline_)
        throw BudgetExceeded(EventCode::Deadline, "this took longer than one leaf may take");
}

}  // namespace toolkit::quorvis
