#include "toolkit/quorvis/walk/SharedWalk.h"

#include <algorithm>
#include <utility>

#include "toolkit/quorvis/leaves/Machine.h"

namespace toolkit::quorvis {

SharedWalk::SharedWalk(Machine& machine, const GlobTrie& trie, std::chrono::steady_clock::time_point end)
    : machine_(machine),
      trie_(trie),
      end_(std::min(end, machine.effort().end())),
      opener_(machine.root(), machine.settings()),
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
    const std::uint64_t limit = machine_.settings().fileSystem.maxEntries;
    const std::uint64_t before = std::min(machine_.countEntries(count), limit);
    if (count <= limit - before) return count;
    end(EventCode::LimitEntries, "More than " + std::to_string(limit) + " names in all directories");
    return limit - before;
}

std::uint64_t SharedWalk::mostNamesOfDirectory() const {
    return machine_.settings().fileSystem.maxEntriesPerDirectory;
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
