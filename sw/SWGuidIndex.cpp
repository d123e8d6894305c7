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
    slots_.assign(results.empty() ? 0 : std::bit_ceil(2 * results.size()), {});
    // From the last one on, so that each becomes the first of its identifier in turn.
    for (auto next = results.rbegin(); next != results.rend(); ++next) {
        ZAVSwResult* const result = next->get();
        const std::wstring_view guid = result->guid;
        const std::size_t hash = hashOf(guid);
        Slot& slot = slots_[find(hash, guid)];
        result->nextOfGuid = slot.first;
        slot = {hash, result};
    }
}

ZAVSwResult* SWGuidIndex::first(const wchar_t* guid) const {
    if (slots_.empty()) return nullptr;
    return slots_[find(hashOf(guid), guid)].first;
}

std::size_t SWGuidIndex::find(std::size_t hash, std::wstring_view guid) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].first != nullptr && (slots_[at].hash != hash || slots_[at].first->guid != guid)) {
        at = (at + 1) & mask;
    }
    return at;
}

}  // namespace zav
