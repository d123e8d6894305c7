#include "sw/SWGuidIndex.h"

#include <bit>
#include <functional>

namespace zav {

namespace {

std::size_t hashOf(std::wstring_view guid) {
    return std::hash<std::wstring_view>{}(guid);
}

}  // namespace

void SWGuidIndex::build(const std::vector<std::unique_ptr<ZAVSwResult>>& results) {
    entries_.assign(results.empty() ? 0 : std::bit_ceil(2 * results.size()), {});
    // In reverse order: each result becomes the first of its identifier's list.
    for (auto next = results.rbegin(); next != results.rend(); ++next) {
        ZAVSwResult* const result = next->get();
        const std::wstring_view guid = result->guid;
        const std::size_t hash = hashOf(guid);
        Entry& entry = entries_[slotOf(hash, guid)];
        result->nextOfGuid = entry.first;
        entry.hash = hash;
        entry.first = result;
        ++entry.count;
    }
    fillResults(results.size());
}

void SWGuidIndex::fillResults(std::size_t count) {
    results_.assign(count, nullptr);
    ZAVSwResult** next = results_.data();
    for (Entry& entry : entries_) {
        entry.results = next;
        // The usual case, without access to the result itself.
        if (entry.count == 1) {
            *next++ = entry.first;
            continue;
        }
        for (ZAVSwResult* result = entry.first; result != nullptr; result = result->nextOfGuid)
            *next++ = result;
    }
}

void SWGuidIndex::clear() {
    entries_.clear();
    results_.clear();
}

ZAVSwResult* SWGuidIndex::first(const wchar_t* guid) const {
    if (entries_.empty()) return nullptr;
    return entries_[slotOf(hashOf(guid), guid)].first;
}

SWGuidIndex::Entry* SWGuidIndex::find(const wchar_t* guid) {
    if (entries_.empty()) return nullptr;
    Entry& entry = entries_[slotOf(hashOf(guid), guid)];
    return entry.first != nullptr ? &entry : nullptr;
}

std::size_t SWGuidIndex::slotOf(std::size_t hash, std::wstring_view guid) const {
    const std::size_t mask = entries_.size() - 1;
    std::size_t at = hash & mask;
    while (entries_[at].first != nullptr && (entries_[at].hash != hash || entries_[at].first->guid != guid)) {
        at = (at + 1) & mask;
    }
    return at;
}

}  // namespace zav
