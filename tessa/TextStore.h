#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "kest/String.h"
#include "tessa/Arena.h"

namespace tessa {

// Owns the texts of a document, wide and NUL-terminated, and its names, each of which is stored once. It can outlive the
// tree, so that readers of the tree can keep texts without copying them.
class TextStore {
  public:
    TextStore() : arena_(budget_) {}
    TextStore(const TextStore&) = delete;
    TextStore& operator=(const TextStore&) = delete;

    // The String of a name that is given in UTF-8. Equal names have the same String.
    const kest::String* intern(const char* utf8);

    // Builds a text in pieces: append() each piece, then finish() or drop() the text.
    void append(const char* utf8, std::size_t length);
    bool isOpen() const { return length_ != 0; }
    std::wstring_view open() const { return {openText(), length_}; }
    const wchar_t* finish();
    void drop() { length_ = 0; }

    // Stores a whole text. REQUIRES: no text is open.
    const wchar_t* add(const char* utf8);

    MemoryBudget& budget() { return budget_; }

  private:
    struct Name {
        std::uint64_t hash;
        std::string_view utf8;  // NUL-terminated
        kest::String text;
        Name* follower;  // the name that was interned next last time, or null
    };

    wchar_t* openText() const { return reinterpret_cast<wchar_t*>(arena_.open()); }
    void makeRoom(std::size_t characters);
    Name* findName(std::string_view utf8);
    Name* addName(std::string_view utf8, std::uint64_t hash, std::size_t slot);
    void growTable();

    MemoryBudget budget_;
    Arena arena_;
    std::size_t length_ = 0;  // of the open text, in characters
    std::deque<Name> names_;
    std::vector<Name*> table_;  // open addressing; the size is a power of two, at most half is used
    Name* latest_ = nullptr;
};

}  // namespace tessa
