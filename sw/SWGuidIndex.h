#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "sw/ZAVSwResult.h"

namespace zav {

// The results of an evaluation by their identifiers. Looking up changes nothing.
//     for (ZAVSwResult* r = index.first(guid); r != nullptr; r = r->nextOfGuid) ...   // in document order
class SWGuidIndex {
  public:
    // Knows these results and no others from now on. Throws std::bad_alloc.
    void build(const std::vector<std::unique_ptr<ZAVSwResult>>& results);
    void clear() { slots_.clear(); }

    // Null when no result has that identifier.
    ZAVSwResult* first(const wchar_t* guid) const;

  private:
    struct Slot {
        std::size_t hash;
        ZAVSwResult* first;
    };

    // Where the identifier stands, or the free place where it belongs. REQUIRES: there are slots.
    std::size_t find(std::size_t hash, std::wstring_view guid) const;

    std::vector<Slot> slots_;  // open addressing, a power of two, at most half full
};

}  // namespace zav
