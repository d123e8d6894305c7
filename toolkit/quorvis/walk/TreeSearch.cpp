#include "toolkit/quorvis/walk/TreeSearch.h"

#include <algorithm>
#include <utility>

#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/SharedWalk.h"
#include "toolkit/quorvis/walk/WalkCrew.h"
#include "toolkit/quorvis/walk/WalkFindings.h"

namespace toolkit::quorvis {

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kMaxDepth = 64;

// A walk may take one part in so many of the time for the evaluation.
constexpr int kWalksPerTimeLimit = 2;

// The key of a request. A NUL cannot be in a pattern.
std::string keyOf(const GlobRequest& request) {
    std::string key = request.pattern;
    key.push_back('\0');
    key.append(std::to_string(request.maxDepth)).push_back('\0');
    return key.append(request.exclude);
}

// Parses the pattern of a request. Returns what is wrong with it, or nothing.
std::string parsePattern(const GlobRequest& request, bool wholeTree, std::vector<GlobSteps>& alternatives) {
    if (const auto problem = readPattern(request.pattern, alternatives))
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

}  // namespace

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
        found = walk(wanted);
    } catch (...) {
        // Each of them gets a walk of its own when its hits are asked for.
        for (const GlobRequest& request : wanted) hits_.erase(keyOf(request));
        throw;
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) *places[i] = std::move(found[i]);
}

std::vector<GlobHits> TreeSearch::walk(std::span<const GlobRequest> requests) {
    if (!walks_) {
        const Event refusal{EventCode::Aborted, {}, "no directories are walked any more", {}, {}};
        return std::vector<GlobHits>(requests.size(), GlobHits{{}, true, {refusal}});
    }
    const Clock::time_point latest =
        Clock::now() + Clock::duration(settings_.evaluation.timeLimit) / kWalksPerTimeLimit;
    const Clock::time_point deadline = std::min(latest, budget_.deadline());
    const LookupBudget::DeadlineScope scope(budget_, deadline);
    return walkUntil(deadline, requests);
}

std::vector<GlobHits> TreeSearch::walkUntil(Clock::time_point deadline,
                                            std::span<const GlobRequest> requests) {
    std::vector<GlobHits> hits(requests.size());
    GlobTrie trie;
    for (std::uint32_t i = 0; i < requests.size(); ++i) {
        std::vector<GlobSteps> alternatives;
        std::string problem = parsePattern(requests[i], settings_.fileSystem.wholeTree, alternatives);
        if (!problem.empty()) {
            hits[i].incomplete = true;
            hits[i].events.push_back(
                {EventCode::Unsupported, requests[i].pattern, std::move(problem), {}, {}});
            continue;
        }
        for (const GlobSteps& steps : alternatives) trie.add(steps, scopeOf(requests[i], settings_), i);
    }
    if (trie.empty()) return hits;
    SharedWalk shared(root_, settings_, trie, namesSeen_, deadline);
    WalkCrew crew(shared, settings_.evaluation.jobs,
                  WalkFindings(trie, requests.size(), settings_.fileSystem.maxMatches));
    crew.run().finish(shared.ending(), hits);
    return hits;
}

}  // namespace toolkit::quorvis
