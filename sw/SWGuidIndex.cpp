#include "sw/SWGuidIndex.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "tessa/Utf8.h"

namespace zav {

namespace {

constexpr wchar_t kLastCodePoint = 0x10FFFF;

// FNV-1a of the identifier in UTF-8.
class Hash {
  public:
    void add(char byte) { hash_ = (hash_ ^ static_cast<unsigned char>(byte)) * 1099511628211U; }
    std::size_t value() const { return hash_ ^ (hash_ >> 32U); }

  private:
    std::uint64_t hash_ = 14695981039346656037U;
};

std::size_t hashOf(const char* guid) {
    Hash hash;
    for (; *guid != '\0'; ++guid) hash.add(*guid);
    return hash.value();
}

std::size_t hashOf(const wchar_t* guid) {
    Hash hash;
    for (; *guid != L'\0'; ++guid) {
        char bytes[4];
        const char* const end = tessa::narrowUtf8(*guid, bytes);
        for (const char* byte = bytes; byte != end; ++byte) hash.add(*byte);
    }
    return hash.value();
}

bool equal(const char* guid, const char* other) {
    return std::strcmp(guid, other) == 0;
}

// A host's text may contain what is no code point.
bool equal(const char* guid, const wchar_t* other) {
    for (; *other != L'\0'; ++other) {
        char bytes[4];
        const auto length = static_cast<std::size_t>(tessa::narrowUtf8(*other, bytes) - bytes);
        if (*other < 0 || *other > kLastCodePoint || std::strncmp(guid, bytes, length) != 0) return false;
        guid += length;
    }
    return *guid == '\0';
}

}  // namespace

void SWGuidIndex::build(const std::vector<std::unique_ptr<ZAVSwResult>>& results) {
    entries_.assign(results.empty() ? 0 : std::bit_ceil(2 * results.size()), {});
    // In reverse order: each result becomes the first of its identifier's list.
    for (auto next = results.rbegin(); next != results.rend(); ++next) {
        ZAVSwResult* const result = next->get();
        const char* const guid = result->guid;
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

template <class Character>
std::size_t SWGuidIndex::slotOf(std::size_t hash, const Character* guid) const {
    const std::size_t mask = entries_.size() - 1;
    std::size_t at = hash & mask;
    while (entries_[at].first != nullptr &&
           (entries_[at].hash != hash || !equal(entries_[at].first->guid, guid))) {
        at = (at + 1) & mask;
    }
    return at;
}

}  // namespace zav
