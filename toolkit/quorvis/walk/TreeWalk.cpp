#include "toolkit/quorvis/walk/TreeWalk.h"

#include <algorithm>
#include <utility>

#include "toolkit/quorvis/leaves/Machine.h"
#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/SharedWalk.h"
#include "toolkit/quorvis/walk/WalkCrew.h"
#include "toolkit/quorvis/walk/WalkFindings.h"

namespace toolkit::quorvis {

namespace {

constexpr unsigned kDeepestWalk = 64;

// Takes the pattern of a request apart; returns what is wrong with it, or nothing.
std::string takeApart(const GlobRequest& request, bool wholeTree, std::vector<GlobSteps>& alternatives) {
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
    scope.depthIsAsked = request.maxDepth != 0 && request.maxDepth <= kDeepestWalk;
    scope.maxDepth =
        std::min(request.maxDepth != 0 ? request.maxDepth : settings.fileSystem.maxDepth, kDeepestWalk);
    scope.exclude = request.exclude;
    return scope;
}

}  // namespace

std::vector<GlobHits> walkTree(Machine& machine, std::span<const GlobRequest> requests,
                               std::chrono::steady_clock::time_point end) {
    const Settings& settings = machine.settings();
    std::vector<GlobHits> hits(requests.size());
    GlobTrie trie;
    for (std::uint32_t i = 0; i < requests.size(); ++i) {
        std::vector<GlobSteps> alternatives;
        std::string problem = takeApart(requests[i], settings.fileSystem.wholeTree, alternatives);
        if (!problem.empty()) {
            hits[i].incomplete = true;
            hits[i].events.push_back(
                {EventCode::Unsupported, requests[i].pattern, std::move(problem), {}, {}});
            continue;
        }
        for (const GlobSteps& steps : alternatives) trie.add(steps, scopeOf(requests[i], settings), i);
    }
    if (trie.empty()) return hits;
    SharedWalk shared(machine, trie, end);
    WalkCrew crew(shared, settings.evaluation.jobs,
                  WalkFindings(trie, requests.size(), settings.fileSystem.maxMatches));
    crew.run().finish(shared.ending(), hits);
    return hits;
}

}  // namespace toolkit::quorvis
