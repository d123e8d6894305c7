#include "tessa/TextStore.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>
#include <utility>

#include "tessa/Utf8.h"

namespace tessa {

namespace {

constexpr std::size_t kFirstTable = 64;

// The memory that a name takes besides its texts, in the table here and in the parser.
constexpr std::size_t kNameCost = 256;

// Block sizes double from the first to the largest, so small documents take little memory and large ones few blocks.
constexpr std::size_t kFirstBlock = std::size_t{4} << 10;
constexpr std::size_t kMaxBlock = std::size_t{1} << 20;

// What stands before a text: the distance to its wide form, in wide characters, and whether that has been written.
constexpr char kNarrow = 0;
constexpr char kBeingWidened = 1;
constexpr char kWidened = 2;

std::uint32_t distanceOf(const char* text) {
    std::uint32_t distance = 0;
    std::memcpy(&distance, text - 1 - sizeof distance, sizeof distance);
    return distance;
}

// The wide character that begins at the text's address, rounded down.
wchar_t* alignedDown(char* text) {
    return reinterpret_cast<wchar_t*>(text - reinterpret_cast<std::uintptr_t>(text) % sizeof(wchar_t));
}

// FNV-1a, which is fast enough for short and few names.
std::uint64_t hashOf(std::string_view bytes) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    return hash ^ (hash >> 32U);
}

}  // namespace

// Instances of a group have the same fields in the same order, so the name that followed the previous one last time is
// nearly always the next.
const TextStore::Name* TextStore::intern(std::string_view utf8) {
    Name* const expected = latest_ != nullptr ? latest_->follower : nullptr;
    Name* const name = expected != nullptr && expected->utf8 == utf8 ? expected : findName(utf8);
    if (latest_ != nullptr) latest_->follower = name;
    latest_ = name;
    return name;
}

TextStore::Name* TextStore::findName(std::string_view utf8) {
    const std::uint64_t hash = hashOf(utf8);
    if (table_.empty()) table_.resize(kFirstTable);
    std::size_t slot = hash & (table_.size() - 1);
    while (Name* const known = table_[slot]) {
        if (known->hash == hash && known->utf8 == utf8) return known;
        slot = (slot + 1) & (table_.size() - 1);
    }
    return addName(utf8, hash, slot);
}

TextStore::Name* TextStore::addName(std::string_view utf8, std::uint64_t hash, std::size_t slot) {
    budget_.charge(kNameCost + sizeof(Name) + utf8.size() * (sizeof(wchar_t) + 1));
    names_.push_back({hash, {add(utf8), utf8.size()}, kest::String(widened(utf8)), nullptr});
    Name* const name = &names_.back();
    table_[slot] = name;
    if (names_.size() * 2 > table_.size()) growTable();
    return name;
}

void TextStore::growTable() {
    std::vector<Name*> larger(table_.size() * 2);
    for (Name& name : names_) {
        std::size_t slot = name.hash & (larger.size() - 1);
        while (larger[slot] != nullptr) slot = (slot + 1) & (larger.size() - 1);
        larger[slot] = &name;
    }
    table_ = std::move(larger);
}

// Moves the open text to a new block. The size is doubled so that long texts move only a few times.
void TextStore::makeRoom(std::size_t length) {
    const std::string_view moved = open();
    addBlock(kTextCost + (moved.empty() ? length : 2 * (moved.size() + length)));
    if (!moved.empty()) std::memcpy(text_, moved.data(), moved.size());
    next_ = text_ + moved.size();
}

void TextStore::addBlock(std::size_t size) {
    blockSize_ = blockSize_ == 0 ? kFirstBlock : std::min(blockSize_ * 2, kMaxBlock);
    size = std::max(kPrefix + size, blockSize_);
    size += (sizeof(wchar_t) - size % sizeof(wchar_t)) % sizeof(wchar_t);
    blocks_.push_back(blockOf(size));
    size = blocks_.back().size;
    char* const begin = blocks_.back().memory.get();
    wides_ = reinterpret_cast<wchar_t*>(begin + size);
    end_ = begin + size;
    text_ = next_ = begin + kPrefix;
}

// A block of at least this size: a spare one, of which the last is the largest, or a new one.
TextStore::Block TextStore::blockOf(std::size_t size) {
    const bool fits = !spare_.empty() && spare_.back().size >= size;
    if (fits) size = spare_.back().size;
    const std::size_t bytes = size + size * sizeof(wchar_t);
    budget_.charge(bytes);
    if (!fits) return {kest::mallocArray<char>(bytes), size};
    Block block = std::move(spare_.back());
    spare_.pop_back();
    return block;
}

void TextStore::clear() {
    spare_ = std::move(blocks_);
    blocks_.clear();
    blockSize_ = 0;
    wides_ = nullptr;
    text_ = next_ = end_ = nullptr;
    names_.clear();
    table_.clear();
    latest_ = nullptr;
    budget_ = MemoryBudget();
}

const char* TextStore::finish() {
    char* const text = text_;
    *next_ = '\0';
    const wchar_t* const wide = wides_ + (text - blocks_.back().memory.get());
    const auto distance = static_cast<std::uint32_t>(wide - alignedDown(text));
    std::memcpy(text - kPrefix, &distance, sizeof distance);
    text[-1] = kNarrow;
    next_ += kTextCost;
    text_ = next_;
    return text;
}

const char* TextStore::add(std::string_view utf8) {
    append(utf8.data(), utf8.size());
    return finish();
}

const wchar_t* TextStore::wide(const char* text) {
    if (*text == '\0') return L"";
    auto* const own = const_cast<char*>(text);  // every text of a store was made writable
    wchar_t* const wide = alignedDown(own) + distanceOf(own);
    const std::atomic_ref<char> state(own[-1]);
    if (state.load(std::memory_order_acquire) == kWidened) return wide;
    char expected = kNarrow;
    if (state.compare_exchange_strong(expected, kBeingWidened, std::memory_order_acquire)) {
        *widenUtf8(own, std::strlen(own), wide) = L'\0';
        state.store(kWidened, std::memory_order_release);
    } else {
        while (state.load(std::memory_order_acquire) != kWidened) std::this_thread::yield();
    }
    return wide;
}

}  // namespace tessa
