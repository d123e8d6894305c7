#include "toolkit/quorvis/WalkFindings.h"

#include <algorithm>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::uint8_t kMostProblems = 10;  // of one node

Event makeEvent(EventCode code, std::string path, std::string text) {
    return {code, std::move(path), std::move(text), {}, {}};
}

}  // namespace

// Of too many matches those are kept that come first, in whatever order the directories hold them: the paths are a heap
// with the last one on top.
void WalkFindings::keep(GlobHits& hits, const std::string& path) {
    hits.paths.push_back(path);
    std::ranges::push_heap(hits.paths);
    if (hits.paths.size() <= maxMatches_) return;
    std::ranges::pop_heap(hits.paths);
    hits.paths.pop_back();
    if (hits.incomplete && !hits.events.empty() && hits.events.back().code == EventCode::LimitMatches) return;
    hits.incomplete = true;
    hits.events.push_back(
        makeEvent(EventCode::LimitMatches, {}, "More than " + std::to_string(maxMatches_) + " matches"));
}

void WalkFindings::hit(GlobTrie::NodeId node, const std::string& path) {
    trie_.forEachRequest(node, [&](std::uint32_t request) {
        if (std::exchange(lastHits_[request], name_) != name_) keep(hits_[request], path);
    });
}

void WalkFindings::problem(GlobTrie::NodeId node, EventCode code, const std::string& path, std::string text) {
    if (problemsOf_[node] == kMostProblems) return;
    ++problemsOf_[node];
    problems_.push_back({node, makeEvent(code, path, std::move(text))});
}

void WalkFindings::stop(EventCode code, std::string text) {
    if (stopped_) return;
    stopped_ = true;
    const Event event = makeEvent(code, {}, std::move(text));
    for (GlobHits& hits : hits_) {
        hits.incomplete = true;
        hits.events.push_back(event);
    }
}

void WalkFindings::finish() {
    for (const Problem& problem : problems_) {
        for (const std::uint32_t request : trie_.requestsBelow(problem.node)) {
            if (problem.event.code != EventCode::Loop) hits_[request].incomplete = true;  // seen elsewhere
            hits_[request].events.push_back(problem.event);
        }
    }
    for (GlobHits& hits : hits_) std::ranges::sort(hits.paths);
}

}  // namespace toolkit::quorvis
