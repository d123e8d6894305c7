#include "toolkit/quorvis/leaves/Machine.h"

#include <algorithm>
#include <utility>

#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

namespace {

// Tells requests apart; no pattern holds a NUL.
std::string keyOf(const GlobRequest& request) {
    std::string key = request.pattern;
    key.push_back('\0');
    key.append(std::to_string(request.maxDepth)).push_back('\0');
    return key.append(request.exclude);
}

// For the rest of the evaluation there must be time, too.
constexpr int kWalksInTime = 2;

}  // namespace

void Machine::forget() {
    files_.forget();
    contentFilters_.forget();
    forgetRegexes();
}

std::vector<GlobHits> Machine::walk(std::span<const GlobRequest> requests) {
    if (!walks_) {
        const Event refusal{EventCode::Aborted, {}, "no directories are walked any more", {}, {}};
        return std::vector<GlobHits>(requests.size(), GlobHits{{}, true, {refusal}});
    }
    const Effort::Clock::time_point latest =
        Effort::Clock::now() + Effort::Clock::duration(settings_.evaluation.timeLimit) / kWalksInTime;
    const Effort::Until until(effort_, std::min(latest, effort_.end()));
    return walkTree(*this, requests, latest);
}

const GlobHits& Machine::hits(const GlobRequest& request) {
    const std::string key = keyOf(request);
    const auto found = hits_.find(key);
    if (found != hits_.end()) return found->second;
    return hits_.emplace(key, std::move(walk({&request, 1}).front())).first->second;
}

void Machine::walkAhead(std::vector<GlobRequest> requests) {
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
        // Each of them is walked for when it is asked for.
        for (const GlobRequest& request : wanted) hits_.erase(keyOf(request));
        throw;
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) *places[i] = std::move(found[i]);
}

}  // namespace toolkit::quorvis
