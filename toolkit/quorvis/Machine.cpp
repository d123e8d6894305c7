#include "toolkit/quorvis/Machine.h"

#include <algorithm>

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
    const auto before = [](const GlobRequest& left, const GlobRequest& right) {
        return keyOf(left) < keyOf(right);
    };
    const auto same = [](const GlobRequest& left, const GlobRequest& right) {
        return keyOf(left) == keyOf(right);
    };
    std::sort(requests.begin(), requests.end(), before);
    requests.erase(std::unique(requests.begin(), requests.end(), same), requests.end());
    std::vector<GlobHits> found = walkTree(*this, requests);
    for (std::size_t i = 0; i < requests.size(); ++i) hits_.emplace(keyOf(requests[i]), std::move(found[i]));
}

}  // namespace toolkit::quorvis
