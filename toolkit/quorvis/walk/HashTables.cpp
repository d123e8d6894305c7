#include "toolkit/quorvis/walk/HashTables.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMinSlots = 64;

}  // namespace

void PairTable::put(const Slot& slot) {
    std::size_t i = place(slot.key);
    while (slots_[i].value != 0) i = (i + 1) & (slots_.size() - 1);
    slots_[i] = slot;
}

void PairTable::add(std::uint32_t first, std::uint32_t second, std::uint32_t value) {
    if (2 * (used_ + 1) > slots_.size()) {
        const std::vector<Slot> old = std::exchange(slots_, {});
        slots_.resize(std::max(kMinSlots, old.size() * 2));
        shift_ = 64U - static_cast<unsigned>(std::countr_zero(slots_.size()));
        for (const Slot& slot : old) {
            if (slot.value != 0) put(slot);
        }
    }
    put({keyOf(first, second), value});
    ++used_;
}

void NameTable::put(std::uint32_t number) {
    const std::uint64_t hash = hashOf(names_[number - 1]);
    std::size_t i = hash & (slots_.size() - 1);
    while (slots_[i].number != 0) i = (i + 1) & (slots_.size() - 1);
    slots_[i] = {static_cast<std::uint32_t>(hash >> 32U), number};
    const std::uint64_t bit = (hash >> 16U) & (filter_.size() * 64 - 1);
    filter_[bit / 64] |= std::uint64_t{1} << (bit % 64);
}

void NameTable::grow() {
    slots_.assign(std::max(kMinSlots, slots_.size() * 2), {});
    filter_.assign(slots_.size() / 8, 0);
    for (std::uint32_t number = 1; number <= names_.size(); ++number) put(number);
}

std::uint32_t NameTable::add(std::string_view name) {
    if (const std::uint32_t number = find(name); number != 0) return number;
    names_.emplace_back(name);
    const auto number = static_cast<std::uint32_t>(names_.size());
    if (2 * names_.size() > slots_.size())
        grow();
    else
        put(number);
    return number;
}

}  // namespace toolkit::quorvis
