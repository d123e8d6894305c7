// Hash tables for the inner loop of a walk: with open addressing, and without allocations in a lookup.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// Maps pairs of numbers to numbers greater than 0.
class PairTable {
  public:
    // 0 for an unknown pair.
    std::uint32_t find(std::uint32_t first, std::uint32_t second) const {
        if (slots_.empty()) return 0;
        const std::uint64_t key = keyOf(first, second);
        for (std::size_t i = place(key);; i = (i + 1) & (slots_.size() - 1)) {
            if (slots_[i].value == 0 || slots_[i].key == key) return slots_[i].value;
        }
    }
    // REQUIRES: the pair is unknown.
    void add(std::uint32_t first, std::uint32_t second, std::uint32_t value);

  private:
    struct Slot {
        std::uint64_t key = 0;
        std::uint32_t value = 0;
    };
    static std::uint64_t keyOf(std::uint32_t first, std::uint32_t second) {
        return (std::uint64_t{first} << 32U) | second;
    }
    std::size_t place(std::uint64_t key) const { return (key * 0x9E3779B97F4A7C15U) >> shift_; }
    void put(const Slot& slot);

    std::vector<Slot> slots_;  // their number is a power of two
    unsigned shift_ = 64;
    std::size_t used_ = 0;
};

// Numbers names, starting with 1.
class NameTable {
  public:
    // 0 for an unknown name.
    std::uint32_t find(std::string_view name) const {
        if (slots_.empty()) return 0;
        const std::uint64_t hash = hashOf(name);
        if (!mayHold(hash)) return 0;
        for (std::size_t i = hash & (slots_.size() - 1);; i = (i + 1) & (slots_.size() - 1)) {
            const Slot& slot = slots_[i];
            if (slot.number == 0) return 0;
            if (slot.tag == static_cast<std::uint32_t>(hash >> 32U) && names_[slot.number - 1] == name)
                return slot.number;
        }
    }
    // The number of the name, which is added if it is unknown.
    std::uint32_t add(std::string_view name);
    const std::string& nameOf(std::uint32_t number) const { return names_[number - 1]; }

  private:
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t number = 0;
    };
    template <typename Word>
    static std::uint64_t wordAt(const char* place) {
        Word word;
        std::memcpy(&word, place, sizeof word);
        return word;
    }
    // Mixes all bytes, eight at a time. The last eight may overlap those before.
    static std::uint64_t hashOf(std::string_view name) {
        const char* const end = name.data() + name.size();
        std::uint64_t hash = name.size();
        const auto mix = [&hash](std::uint64_t word) {
            hash = (hash ^ word) * 0x9FB21C651E98DF25U;
            hash ^= hash >> 32U;
        };
        if (name.size() >= 8) {
            for (const char* at = name.data(); at + 8 < end; at += 8) mix(wordAt<std::uint64_t>(at));
            mix(wordAt<std::uint64_t>(end - 8));
        } else if (name.size() >= 4) {
            mix(wordAt<std::uint32_t>(name.data()) << 32U | wordAt<std::uint32_t>(end - 4));
        } else {
            for (const char c : name) mix(static_cast<unsigned char>(c));
        }
        return hash;
    }
    // A Bloom filter. Few names of a walk are in the table, and only the filter fits into the first-level cache.
    bool mayHold(std::uint64_t hash) const {
        const std::uint64_t bit = (hash >> 16U) & (filter_.size() * 64 - 1);
        return (filter_[bit / 64] >> (bit % 64) & 1U) != 0;
    }
    void put(std::uint32_t number);
    void grow();

    std::vector<Slot> slots_;            // their number is a power of two
    std::vector<std::uint64_t> filter_;  // eight bits for each slot
    std::vector<std::string> names_;
};

}  // namespace toolkit::quorvis
