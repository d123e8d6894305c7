#include "toolkit/quorvis/walk/SharedWalk.h"

#include <algorithm>
#include <utility>

namespace toolkit::quorvis {

SharedWalk::SharedWalk(const Root& root, const Settings& settings, const GlobTrie& trie,
                       std::atomic<std::uint64_t>& namesSeen, std::chrono::steady_clock::time_point end)
    : settings_(settings),
      trie_(trie),
      namesSeen_(namesSeen),
      end_(end),
      opener_(root, settings),
      excludes_(trie.scopeCount()) {
    for (std::uint32_t i = 0; i < excludes_.size(); ++i) {
        const std::string& exclude = trie.scope(i).exclude;
        if (exclude.empty()) continue;
        excludes_[i].emplace(exclude);
        anyExclude_ = true;
    }
}

bool SharedWalk::passesOver(GlobTrie::NodeId node, const std::string& path) const {
    const std::optional<PathPattern>& exclude = excludes_[trie_.node(node).scope];
    return exclude && exclude->matches(path);
}

std::uint64_t SharedWalk::claimNames(std::uint64_t count) {
    const std::uint64_t limit = settings_.fileSystem.maxEntries;
    const std::uint64_t before = std::min(namesSeen_.fetch_add(count), limit);
    if (count <= limit - before) return count;
    end(EventCode::LimitEntries, "More than " + std::to_string(limit) + " names in all directories");
    return limit - before;
}

std::uint64_t SharedWalk::mostNamesOfDirectory() const {
    return settings_.fileSystem.maxEntriesPerDirectory;
}

void SharedWalk::watchTime() {
    if (std::chrono::steady_clock::now() >= end_)
        end(EventCode::Deadline, "The time for walking through directories was over");
}

void SharedWalk::end(EventCode code, std::string text) {
    const std::lock_guard lock(mutex_);
    if (!ending_) ending_ = Event{code, {}, std::move(text), {}, {}};
    stop();
}

}  // namespace toolkit::quorvis
