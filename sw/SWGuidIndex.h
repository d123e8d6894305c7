#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "sw/ZAVSwResult.h"

namespace zav {

// The results of an evaluation by their identifiers. What is handed out belongs to the index and stays until it is built
// anew or cleared.
class SWGuidIndex {
  public:
    // All results of one identifier.
    struct Entry {
        std::size_t hash;
        ZAVSwResult* first;     // null in a free place
        ZAVSwResult** results;  // in document order
        unsigned int count;
        bool handedOut;  // whether the host has asked for all of them before
    };

    // Knows these results and no others from now on. Throws std::bad_alloc.
    void build(const std::vector<std::unique_ptr<ZAVSwResult>>& results);
    void clear();

    // Null when no result has that identifier.
    ZAVSwResult* first(const wchar_t* guid) const;
    Entry* find(const wchar_t* guid);

  private:
    // Where the identifier stands, or the free place where it belongs. REQUIRES: there are entries.
    std::size_t placeOf(std::size_t hash, std::wstring_view guid) const;
    void gather(std::size_t count);

    std::vector<Entry> entries_;         // open addressing, a power of two, at most half full
    std::vector<ZAVSwResult*> results_;  // those of one identifier beside each other
};

}  // namespace zav
