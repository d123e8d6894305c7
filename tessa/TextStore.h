#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string_view>
#include <vector>

#include "kest/Malloced.h"
#include "kest/String.h"
#include "tessa/MemoryBudget.h"

namespace tessa {

// Owns the texts of a document, in UTF-8 and NUL-terminated, and its names, each of which is stored once. It can outlive
// the tree, so that readers of the tree can keep texts without copying them.
//
// Most texts are never requested as wide text, and wide text takes four times the memory. So a text is widened when it is
// first requested, to a place that was reserved for it together with the text: this cannot fail, and memory that is never
// written to takes no room. Before each text stands where that place is. Several threads may ask for the
// wide forms of a store's texts at once; everything else is for one thread.
class TextStore {
  public:
    struct Name {
        std::uint64_t hash;
        std::string_view utf8;  // NUL-terminated
        kest::String text;
        Name* follower;  // the name that was interned next last time, or null
    };

    TextStore() = default;
    TextStore(const TextStore&) = delete;
    TextStore& operator=(const TextStore&) = delete;

    // Stores a name that is given in UTF-8. Equal names are the same Name.
    const Name* intern(std::string_view utf8);

    // The name that will probably be interned next; may be empty.
    std::string_view expectedName() const {
        return latest_ != nullptr && latest_->follower != nullptr ? latest_->follower->utf8
                                                                  : std::string_view();
    }

    // Builds a text in pieces: append() each piece, then finish() or drop() the text. finish() returns the text, which
    // must not be changed.
    void append(const char* utf8, std::size_t length) {
        if (static_cast<std::ptrdiff_t>(length + kTextCost) > end_ - next_) makeRoom(length);
        std::memcpy(next_, utf8, length);
        next_ += length;
    }
    bool isOpen() const { return next_ != text_; }
    std::string_view open() const { return {text_, static_cast<std::size_t>(next_ - text_)}; }
    const char* finish();
    void drop() { next_ = text_; }

    // Stores a whole text. REQUIRES: no text is open.
    const char* add(std::string_view utf8);

    // The wide form of a text of any store, or of an empty text; NUL-terminated. It lives as long as the text.
    static const wchar_t* wide(const char* text);

    MemoryBudget& budget() { return budget_; }

    // Discards all texts and names, and keeps their memory for new ones. Allocates no memory.
    void clear();

  private:
    // What a text takes besides its bytes: the terminator, and what stands before the text.
    static constexpr std::size_t kPrefix = sizeof(std::uint32_t) + 1;
    static constexpr std::size_t kTextCost = 1 + kPrefix;

    // Texts, and behind them the place for as many wide characters.
    struct Block {
        kest::Malloced<char> memory;
        std::size_t size;  // of the part for texts
    };

    void makeRoom(std::size_t length);
    void addBlock(std::size_t size);
    Block blockOf(std::size_t size);
    Name* findName(std::string_view utf8);
    Name* addName(std::string_view utf8, std::uint64_t hash, std::size_t slot);
    void growTable();

    MemoryBudget budget_;
    std::vector<Block> blocks_;
    std::vector<Block> spare_;
    std::size_t blockSize_ = 0;
    wchar_t* wides_ = nullptr;  // of the last block
    char* text_ = nullptr;      // the open text, from here to next_
    char* next_ = nullptr;
    char* end_ = nullptr;  // of the block
    std::deque<Name> names_;
    std::vector<Name*> table_;  // open addressing; the size is a power of two, at most half is used
    Name* latest_ = nullptr;
};

}  // namespace tessa
