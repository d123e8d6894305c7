#include "toolkit/quorvis/walk/WalkState.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxProblemsPerNode = 10;
constexpr std::size_t kMaxPrivatePlaces = 1'000;
constexpr std::size_t kMaxBytes = std::size_t{24} << 20;  // of the paths that one thread finds

std::size_t sizeOf(const std::string& path) {
    return sizeof(std::string) + path.size();
}

bool comesBefore(const Event& left, const Event& right) {
    return std::tie(left.path, left.code, left.text) < std::tie(right.path, right.code, right.text);
}

void addEvent(GlobHits& hits, const Event& event) {
    // A loop hides nothing: what it leads to is found elsewhere.
    if (event.code != EventCode::Loop) hits.incomplete = true;
    hits.events.push_back(event);
    hits.events.back().ofWalk = isOfPrivatePlace(event);
}

}  // namespace

void WorkQueue::updateHungry() {
    hungry_.store(static_cast<int>(waiting_) - static_cast<int>(items_.size()), std::memory_order_relaxed);
}

// Once true it stays true, although the threads leave one by one.
bool WorkQueue::allDone() {
    done_ = done_ || (waiting_ == threads_ && items_.empty());
    return done_;
}

void WorkQueue::join() {
    const std::lock_guard lock(mutex_);
    ++threads_;
}

void WorkQueue::leave() {
    const std::lock_guard lock(mutex_);
    --threads_;
    changed_.notify_all();
}

void WorkQueue::put(WorkItem item) {
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
    updateHungry();
    changed_.notify_one();
}

std::optional<WorkItem> WorkQueue::take() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    updateHungry();
    if (allDone()) changed_.notify_all();
    changed_.wait(lock, [this] { return !items_.empty() || allDone(); });
    if (items_.empty()) return std::nullopt;
    WorkItem item = std::move(items_.front());
    items_.pop_front();
    --waiting_;
    updateHungry();
    return item;
}

WalkState::WalkState(const Root& root, const Settings& settings, const GlobTrie& trie,
                     std::atomic<std::uint64_t>& namesSeen, std::chrono::steady_clock::time_point deadline,
                     WalkProgress* progress)
    : settings_(settings),
      trie_(trie),
      namesSeen_(namesSeen),
      deadline_(deadline),
      progress_(progress),
      opener_(root, settings),
      excludes_(trie.scopeCount()) {
    for (std::uint32_t i = 0; i < excludes_.size(); ++i) {
        const std::string& exclude = trie.scope(i).exclude;
        if (exclude.empty()) continue;
        excludes_[i].emplace(exclude);
        anyExclude_ = true;
    }
}

bool WalkState::excludes(GlobTrie::NodeId node, const std::string& path) const {
    const std::optional<PathPattern>& exclude = excludes_[trie_.node(node).scope];
    return exclude && exclude->matches(path);
}

std::uint64_t WalkState::claimNames(std::uint64_t count) {
    const std::uint64_t limit = settings_.fileSystem.maxEntries;
    const std::uint64_t before = std::min(namesSeen_.fetch_add(count), limit);
    if (count <= limit - before) return count;
    end(EventCode::LimitEntries, "More than " + std::to_string(limit) + " names in all directories");
    return limit - before;
}

std::uint64_t WalkState::maxNamesPerDirectory() const {
    return settings_.fileSystem.maxEntriesPerDirectory;
}

void WalkState::checkTime() {
    if (std::chrono::steady_clock::now() >= deadline_)
        end(EventCode::Deadline, "The time for walking through directories was over");
}

void WalkState::end(EventCode code, std::string text) {
    const std::lock_guard lock(mutex_);
    if (!ending_) ending_ = Event{code, {}, std::move(text), {}, {}};
    stop();
}

// Of too many matches the first ones by path are kept, whatever the order of the directories.
void WalkFindings::keep(Found& found, Hit hit) {
    held_ += sizeOf(hit.path);
    if (held_ > kMaxBytes) {
        held_ -= sizeOf(hit.path);
        found.tooLong = true;
        return;
    }
    found.hits.push_back(std::move(hit));
    std::push_heap(found.hits.begin(), found.hits.end());
    if (found.hits.size() <= maxMatches_) return;
    std::pop_heap(found.hits.begin(), found.hits.end());
    held_ -= sizeOf(found.hits.back().path);
    found.hits.pop_back();
    found.tooMany = true;
}

bool WalkFindings::keep(std::vector<Event>& events, Event event, std::size_t limit) {
    const auto place = std::ranges::upper_bound(events, event, comesBefore);
    if (place == events.end() && events.size() == limit) return false;
    events.insert(place, std::move(event));
    if (events.size() <= limit) return true;
    events.pop_back();
    return false;
}

void WalkFindings::addHit(GlobTrie::NodeId node, const std::string& path, const WalkedFile& file) {
    trie_.forEachRequest(node, [&](std::uint32_t request) {
        if (std::exchange(lastHits_[request], name_) != name_) keep(found_[request], {path, file});
    });
}

void WalkFindings::addProblem(GlobTrie::NodeId node, EventCode code, const std::string& path,
                              std::string text) {
    keep(problems_[node], {code, path, std::move(text), {}, {}}, kMaxProblemsPerNode);
}

void WalkFindings::addPrivatePlace(EventCode code, const std::string& path, std::string text) {
    Event place{code, path, std::move(text), {}, {}};
    // Several names in a directory may lead to the same place.
    if (std::ranges::binary_search(privatePlaces_, place, comesBefore)) return;
    if (!keep(privatePlaces_, std::move(place), kMaxPrivatePlaces)) ++morePrivatePlaces_[code];
}

std::vector<Event> WalkFindings::takePrivatePlaces() {
    for (const auto& [code, count] : morePrivatePlaces_) {
        Event more{code, {}, "more such events were left out", {}, {}};
        more.count = count;
        privatePlaces_.push_back(std::move(more));
    }
    return std::move(privatePlaces_);
}

void WalkFindings::merge(WalkFindings&& other) {
    for (std::size_t i = 0; i < found_.size(); ++i) {
        for (Hit& hit : other.found_[i].hits) keep(found_[i], std::move(hit));
        found_[i].tooMany = found_[i].tooMany || other.found_[i].tooMany;
        found_[i].tooLong = found_[i].tooLong || other.found_[i].tooLong;
    }
    for (auto& [node, problems] : other.problems_) {
        for (Event& event : problems) keep(problems_[node], std::move(event), kMaxProblemsPerNode);
    }
    for (const Event& place : other.privatePlaces_) addPrivatePlace(place.code, place.path, place.text);
    for (const auto& [code, count] : other.morePrivatePlaces_) morePrivatePlaces_[code] += count;
}

void WalkFindings::moveTo(std::vector<GlobHits>& hits, const std::optional<Event>& ending) {
    const std::string tooMany = "More than " + std::to_string(maxMatches_) + " matches";
    for (std::size_t i = 0; i < hits.size(); ++i) {
        std::sort(found_[i].hits.begin(), found_[i].hits.end());
        for (Hit& hit : found_[i].hits) {
            hits[i].paths.push_back(std::move(hit.path));
            hits[i].files.push_back(hit.file);
        }
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
