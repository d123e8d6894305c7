#include "toolkit/quorvis/Machine.h"

#include <utility>

namespace toolkit::quorvis {

namespace {

// Tells requests apart; no pattern holds a NUL.
std::string keyOf(const GlobRequest& request) {
    std::string key = request.pattern;
    key.push_back('\0');
    key.append(std::to_string(request.maxDepth)).push_back('\0');
    return key.append(request.exclude);
}

}  // namespace

const GlobHits& Machine::hits(const GlobRequest& request) {
    const std::string key = keyOf(request);
    const auto found = hits_.find(key);
    if (found != hits_.end()) return found->second;
    return hits_.emplace(key, std::move(walkTree(*this, {&request, 1}).front())).first->second;
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
    std::vector<GlobHits> found = walkTree(*this, wanted);
    for (std::size_t i = 0; i < wanted.size(); ++i) *places[i] = std::move(found[i]);
}

}  // namespace toolkit::quorvis
