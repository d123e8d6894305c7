#include "toolkit/quorvis/walk/TreeSearch.h"

#include <sys/resource.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "toolkit/quorvis/sandbox/Sandbox.h"
#include "toolkit/quorvis/walk/DirectoryWalk.h"
#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/WalkState.h"

namespace toolkit::quorvis {

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kMaxDepth = 64;

// A walk may take this fraction of the time limit.
constexpr int kWalksPerTimeLimit = 2;

// The key of a request. A NUL cannot be in a pattern.
std::string keyOf(const GlobRequest& request) {
    std::string key = request.pattern;
    key.push_back('\0');
    key.append(std::to_string(request.maxDepth)).push_back('\0');
    return key.append(request.exclude);
}

// Parses the pattern of a request. Returns what is wrong with it, or nothing.
std::string parseRequest(const GlobRequest& request, bool wholeTree, std::vector<GlobSteps>& alternatives) {
    if (const auto problem = parsePattern(request.pattern, alternatives))
        return "This is no pattern: " + *problem;
    if (!wholeTree && searchesWholeTree(alternatives))
        return "A \"**\" needs a directory of a fixed name before it";
    if (request.exclude.empty()) return {};
    if (const auto problem = problemOfPattern(request.exclude))
        return "\"exclude\" is no pattern: " + *problem;
    return {};
}

GlobScope scopeOf(const GlobRequest& request, const Settings& settings) {
    GlobScope scope;
    scope.depthIsAsked = request.maxDepth != 0 && request.maxDepth <= kMaxDepth;
    scope.maxDepth =
        std::min(request.maxDepth != 0 ? request.maxDepth : settings.fileSystem.maxDepth, kMaxDepth);
    scope.exclude = request.exclude;
    return scope;
}

// About how many files the file system of the live machine has; 0 if that is unknown. A copy of a machine may be a small part
// of its file system.
std::uint64_t namesIn(const Root& root) {
    struct statvfs status {};
    if (!root.live() || ::statvfs("/", &status) != 0 || status.f_files < status.f_ffree) return 0;
    return status.f_files - status.f_ffree;
}

// A thread keeps the directories between the top and its current one open.
unsigned maxThreads() {
    constexpr rlim_t kFilesPerThread = 96;
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0) return 1;
    return static_cast<unsigned>(std::clamp<rlim_t>(files.rlim_cur / kFilesPerThread, 1, 1024));
}

// The threads of a walk. It begins in the calling thread. The others start when there is enough to do, and as many as
// can be started.
class WalkThreadPool {
  public:
    // `jobs` is the maximum number of threads, with the calling one.
    WalkThreadPool(WalkState& state, unsigned jobs, const WalkFindings& noFindings)
        : state_(state), jobs_(jobs), noFindings_(noFindings), findings_(noFindings) {}

    // Returns the findings of all threads. Throws what one of them threw.
    WalkFindings run() {
        state_.queue().join();
        runGuarded([this] { lead(); });
        for (Helper& helper : helpers_) helper.thread.reset();
        if (failure_) std::rethrow_exception(failure_);
        for (Helper& helper : helpers_) findings_.merge(std::move(helper.findings));
        return std::move(findings_);
    }

  private:
    struct Helper {
        WalkFindings findings;
        std::unique_ptr<HelperThread> thread;
    };

    // Starting a thread takes as long as reading a few directories.
    static constexpr std::uint64_t kDirectoriesBeforeHelp = 100;

    void lead() {
        DirectoryWalk walk(state_, findings_);
        walk.begin();
        while (walk.entered() < kDirectoriesBeforeHelp && walk.step()) {
        }
        if (walk.entered() >= kDirectoriesBeforeHelp) startHelpers();
        while (walk.step()) {
        }
        if (!helpers_.empty()) workFromQueue(walk);
    }

    void startHelpers() {
        const unsigned count = std::min(jobs_, maxThreads());
        for (unsigned i = 1; i < count; ++i) {
            Helper& helper = helpers_.emplace_back(Helper{noFindings_, nullptr});
            state_.queue().join();
            helper.thread = std::make_unique<HelperThread>([this, &helper] { help(helper); });
            if (helper.thread->started()) continue;
            state_.queue().leave();
            return;
        }
    }

    void help(Helper& helper) {
        runGuarded([&] {
            DirectoryWalk walk(state_, helper.findings);
            workFromQueue(walk);
        });
    }

    void workFromQueue(DirectoryWalk& walk) {
        while (std::optional<WorkItem> item = state_.queue().take()) {
            walk.takeOver(std::move(*item));
            while (walk.step()) {
            }
        }
    }

    // A failure of one thread ends the whole walk.
    void runGuarded(const std::function<void()>& work) {
        try {
            work();
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
            state_.stop();
        }
        state_.queue().leave();
    }

    WalkState& state_;
    unsigned jobs_;
    const WalkFindings noFindings_;
    WalkFindings findings_;
    std::list<Helper> helpers_;
    std::mutex mutex_;
    std::exception_ptr failure_;
};

}  // namespace

std::size_t TreeSearch::countKnown(const GlobRequest& request) const {
    const auto found = hits_.find(keyOf(request));
    return found == hits_.end() ? 0 : found->second.paths.size();
}

const GlobHits& TreeSearch::hits(const GlobRequest& request) {
    const std::string key = keyOf(request);
    const auto found = hits_.find(key);
    if (found != hits_.end()) return found->second;
    return hits_.emplace(key, std::move(walk({&request, 1}).front())).first->second;
}

void TreeSearch::searchAhead(std::vector<GlobRequest> requests) {
    std::vector<GlobRequest> wanted;
    std::vector<GlobHits*> places;
    for (GlobRequest& request : requests) {
        const auto place = hits_.try_emplace(keyOf(request));
        if (!place.second) continue;
        places.push_back(&place.first->second);
        wanted.push_back(std::move(request));
    }
    std::vector<GlobHits> found;
    try {
        if (progress_ != nullptr) progress_->expect(namesIn(root_));
        found = walk(wanted, progress_);
    } catch (...) {
        // Each of them gets a walk of its own when its hits are asked for.
        for (const GlobRequest& request : wanted) hits_.erase(keyOf(request));
        throw;
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) *places[i] = std::move(found[i]);
}

std::vector<GlobHits> TreeSearch::walk(std::span<const GlobRequest> requests, WalkProgress* progress) {
    if (!walks_) {
        const Event refusal{EventCode::Aborted, {}, "no directories are walked any more", {}, {}};
        return std::vector<GlobHits>(requests.size(), GlobHits{{}, {}, true, {refusal}});
    }
    const Clock::time_point latest =
        Clock::now() + Clock::duration(settings_.evaluation.timeLimit) / kWalksPerTimeLimit;
    const Clock::time_point deadline = std::min(latest, budget_.deadline());
    const LookupBudget::DeadlineScope scope(budget_, deadline);
    return walkUntil(deadline, requests, progress);
}

std::vector<GlobHits> TreeSearch::walkUntil(Clock::time_point deadline, std::span<const GlobRequest> requests,
                                            WalkProgress* progress) {
    std::vector<GlobHits> hits(requests.size());
    GlobTrie trie;
    for (std::uint32_t i = 0; i < requests.size(); ++i) {
        std::vector<GlobSteps> alternatives;
        std::string problem = parseRequest(requests[i], settings_.fileSystem.wholeTree, alternatives);
        if (!problem.empty()) {
            hits[i].incomplete = true;
            hits[i].events.push_back(
                {EventCode::Unsupported, requests[i].pattern, std::move(problem), {}, {}});
            continue;
        }
        for (const GlobSteps& steps : alternatives) trie.add(steps, scopeOf(requests[i], settings_), i);
    }
    if (trie.empty()) return hits;
    WalkState state(root_, settings_, trie, namesSeen_, deadline, progress);
    const WalkFindings noFindings(trie, requests.size(), settings_.fileSystem.maxMatches);
    WalkFindings findings = WalkThreadPool(state, settings_.evaluation.jobs, noFindings).run();
    findings.moveTo(hits, state.ending());
    for (Event& place : findings.takePrivatePlaces()) privatePlaces_.push_back(std::move(place));
    return hits;
}

}  // namespace toolkit::quorvis
