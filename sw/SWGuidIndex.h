#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "sw/ZAVSwResult.h"

namespace zav {

// Finds the results of an evaluation by their identifiers. Everything that it returns is valid until the next build() or
// clear().
class SWGuidIndex {
  public:
    // All results of one identifier.
    struct Entry {
        std::size_t hash;
        ZAVSwResult* first;     // null in an unused slot
        ZAVSwResult** results;  // in document order
        unsigned int count;
        bool wasRequested;  // whether the host has requested all results before
    };

    // Replaces the content of the index by these results. Throws std::bad_alloc.
    void build(const std::vector<std::unique_ptr<ZAVSwResult>>& results);
    void clear();

    // Both return null if no result has the identifier.
    ZAVSwResult* first(const wchar_t* guid) const;
    Entry* find(const wchar_t* guid);

  private:
    // The slot of the identifier, wide or in UTF-8, or the unused slot where it would be stored. REQUIRES: there are
    // entries.
    template <class Character>
    std::size_t slotOf(std::size_t hash, const Character* guid) const;
    void fillResults(std::size_t count);

    std::vector<Entry> entries_;         // open addressing; the size is a power of two, at most half is used
    std::vector<ZAVSwResult*> results_;  // grouped by identifier
};

}  // namespace zav
