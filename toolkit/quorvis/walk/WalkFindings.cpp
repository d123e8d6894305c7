#include "toolkit/quorvis/walk/WalkFindings.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMostProblems = 10;  // of one node

std::size_t sizeOf(const std::string& path) {
    return sizeof path + path.size();
}

bool comesBefore(const Event& left, const Event& right) {
    return std::tie(left.path, left.code, left.text) < std::tie(right.path, right.code, right.text);
}

void addEvent(GlobHits& hits, const Event& event) {
    if (event.code != EventCode::Loop) hits.incomplete = true;  // what it leads to is seen elsewhere
    hits.events.push_back(event);
}

}  // namespace

// Of too many matches those are kept that come first, in whatever order the directories hold them.
void WalkFindings::keep(Found& found, std::string path) {
    held_ += sizeOf(path);
    if (held_ > kMostBytes) {
        held_ -= sizeOf(path);
        found.tooLong = true;
        return;
    }
    found.paths.push_back(std::move(path));
    std::ranges::push_heap(found.paths);
    if (found.paths.size() <= maxMatches_) return;
    std::ranges::pop_heap(found.paths);
    held_ -= sizeOf(found.paths.back());
    found.paths.pop_back();
    found.tooMany = true;
}

void WalkFindings::keep(std::vector<Event>& problems, Event event) {
    const auto place = std::ranges::upper_bound(problems, event, comesBefore);
    if (place == problems.end() && problems.size() == kMostProblems) return;
    problems.insert(place, std::move(event));
    if (problems.size() > kMostProblems) problems.pop_back();
}

void WalkFindings::hit(GlobTrie::NodeId node, const std::string& path) {
    trie_.forEachRequest(node, [&](std::uint32_t request) {
        if (std::exchange(lastHits_[request], name_) != name_) keep(found_[request], path);
    });
}

void WalkFindings::problem(GlobTrie::NodeId node, EventCode code, const std::string& path, std::string text) {
    keep(problems_[node], {code, path, std::move(text), {}, {}});
}

void WalkFindings::add(WalkFindings&& other) {
    for (std::size_t i = 0; i < found_.size(); ++i) {
        for (std::string& path : other.found_[i].paths) keep(found_[i], std::move(path));
        found_[i].tooMany = found_[i].tooMany || other.found_[i].tooMany;
        found_[i].tooLong = found_[i].tooLong || other.found_[i].tooLong;
    }
    for (auto& [node, problems] : other.problems_) {
        for (Event& event : problems) keep(problems_[node], std::move(event));
    }
}

void WalkFindings::finish(const std::optional<Event>& ending, std::vector<GlobHits>& hits) {
    const std::string tooMany = "More than " + std::to_string(maxMatches_) + " matches";
    for (std::size_t i = 0; i < hits.size(); ++i) {
        hits[i].paths = std::move(found_[i].paths);
        std::ranges::sort(hits[i].paths);
        if (found_[i].tooMany) addEvent(hits[i], {EventCode::LimitMatches, {}, tooMany, {}, {}});
        if (found_[i].tooLong)
            addEvent(hits[i], {EventCode::LimitBytes, {}, "More paths than a walk may keep", {}, {}});
        if (ending) addEvent(hits[i], *ending);
    }
    for (const auto& [node, problems] : problems_) {
        for (const std::uint32_t request : trie_.requestsBelow(node)) {
            for (const Event& event : problems) addEvent(hits[request], event);
        }
    }
}

}  // namespace toolkit::quorvis
