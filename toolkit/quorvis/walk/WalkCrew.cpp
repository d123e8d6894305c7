#include "toolkit/quorvis/walk/WalkCrew.h"

#include <sys/resource.h>

#include <algorithm>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kMany = 100;  // directories: starting a thread takes as long as reading a few

// A thread holds the directories between the top and its current one open.
unsigned mostThreads() {
    constexpr rlim_t kFilesOfThread = 96;
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0) return 1;
    return static_cast<unsigned>(std::clamp<rlim_t>(files.rlim_cur / kFilesOfThread, 1, 1024));
}

}  // namespace

WalkCrew::WalkCrew(SharedWalk& shared, unsigned jobs, const WalkFindings& noFindings)
    : shared_(shared), jobs_(jobs), noFindings_(noFindings), findings_(noFindings) {}

// A failure of one thread ends the walk of all.
void WalkCrew::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (...) {
        const std::lock_guard lock(mutex_);
        if (!failure_) failure_ = std::current_exception();
        shared_.stop();
    }
    shared_.shares().leave();
}

void WalkCrew::workOn(DirectoryWalk& walk) {
    while (std::optional<WalkShare> share = shared_.shares().take()) {
        walk.takeOver(std::move(*share));
        while (walk.step()) {
        }
    }
}

void WalkCrew::help(Helper& helper) {
    guarded([&] {
        DirectoryWalk walk(shared_, helper.findings);
        workOn(walk);
    });
}

void WalkCrew::startHelpers() {
    const unsigned most = std::min(jobs_, mostThreads());
    for (unsigned i = 1; i < most; ++i) {
        Helper& helper = helpers_.emplace_back(Helper{noFindings_, nullptr});
        shared_.shares().join();
        helper.thread = std::make_unique<HelperThread>([this, &helper] { help(helper); });
        if (helper.thread->started()) continue;
        shared_.shares().leave();
        return;
    }
}

void WalkCrew::lead() {
    DirectoryWalk walk(shared_, findings_);
    walk.begin();
    while (walk.entered() < kMany && walk.step()) {
    }
    if (walk.entered() >= kMany) startHelpers();
    while (walk.step()) {
    }
    if (!helpers_.empty()) workOn(walk);
}

WalkFindings WalkCrew::run() {
    shared_.shares().join();
    guarded([this] { lead(); });
    for (Helper& helper : helpers_) helper.thread.reset();
    if (failure_) std::rethrow_exception(failure_);
    for (Helper& helper : helpers_) findings_.add(std::move(helper.findings));
    return std::move(findings_);
}

}  // namespace toolkit::quorvis
