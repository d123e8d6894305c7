// Hash tables for the innermost loop of a walk: open addressing, no allocation in a look-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// Numbers from 1 for pairs of numbers.
class PairTable {
  public:
    // 0 when the pair is not there.
    std::uint32_t find(std::uint32_t first, std::uint32_t second) const {
        if (slots_.empty()) return 0;
        const std::uint64_t key = keyOf(first, second);
        for (std::size_t i = place(key);; i = (i + 1) & (slots_.size() - 1)) {
            if (slots_[i].value == 0 || slots_[i].key == key) return slots_[i].value;
        }
    }
    // For a pair that is not there yet.
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

    std::vector<Slot> slots_;  // a power of two of them
    unsigned shift_ = 64;
    std::size_t used_ = 0;
};

// Numbers from 1 for names.
class NameTable {
  public:
    // 0 when the name is not there.
    std::uint32_t find(std::string_view name) const {
        if (slots_.empty()) return 0;
        const std::uint64_t hash = hashOf(name);
        for (std::size_t i = hash & (slots_.size() - 1);; i = (i + 1) & (slots_.size() - 1)) {
            const Slot& slot = slots_[i];
            if (slot.number == 0) return 0;
            if (slot.tag == static_cast<std::uint32_t>(hash >> 32U) && names_[slot.number - 1] == name)
                return slot.number;
        }
    }
    // The number of the name, which is added unless it is there.
    std::uint32_t add(std::string_view name);
    const std::string& nameOf(std::uint32_t number) const { return names_[number - 1]; }

  private:
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t number = 0;
    };
    static std::uint64_t hashOf(std::string_view name) {
        std::uint64_t hash = name.size();
        const auto mix = [&hash](std::uint64_t bytes) {
            hash = (hash ^ bytes) * 0x9FB21C651E98DF25U;
            hash ^= hash >> 32U;
        };
        std::uint64_t bytes = 0;
        for (; name.size() > sizeof bytes; name.remove_prefix(sizeof bytes)) {
            std::memcpy(&bytes, name.data(), sizeof bytes);
            mix(bytes);
        }
        bytes = 0;
        std::memcpy(&bytes, name.data(), name.size());
        mix(bytes);
        mix(hash);
        return hash;
    }
    void grow();

    std::vector<Slot> slots_;  // a power of two of them
    std::vector<std::string> names_;
};

}  // namespace toolkit::quorvis
