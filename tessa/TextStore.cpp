#include "tessa/TextStore.h"

#include <algorithm>
#include <cstring>

#include "tessa/Utf8.h"

namespace tessa {

namespace {

constexpr std::size_t kFirstTable = 64;

// The memory that a name takes besides its texts, in the table here and in the parser.
constexpr std::size_t kNameCost = 256;

// FNV-1a, which is fast enough for short and few names.
std::uint64_t hashOf(std::string_view bytes) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    return hash ^ (hash >> 32U);
}

}  // namespace

// Instances of a group have the same fields in the same order, so the name that followed the previous one last time is
// nearly always the next.
const kest::String* TextStore::intern(const char* utf8) {
    Name* const expected = latest_ != nullptr ? latest_->follower : nullptr;
    Name* const name =
        expected != nullptr && std::strcmp(expected->utf8.data(), utf8) == 0 ? expected : findName(utf8);
    if (latest_ != nullptr) latest_->follower = name;
    latest_ = name;
    return &name->text;
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
    budget_.charge(kNameCost + sizeof(Name) + utf8.size() * (sizeof(wchar_t) + 2));
    std::wstring wide(utf8.size(), L'\0');
    wide.resize(static_cast<std::size_t>(widenUtf8(utf8.data(), utf8.size(), wide.data()) - wide.data()));
    char* const bytes = static_cast<char*>(arena_.allocate(utf8.size() + 1));
    std::memcpy(bytes, utf8.data(), utf8.size() + 1);
    names_.push_back({hash, {bytes, utf8.size()}, kest::String(wide), nullptr});
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

void TextStore::append(const char* utf8, std::size_t length) {
    const std::size_t needed = length_ + length + 1;
    if (arena_.room() < needed * sizeof(wchar_t)) makeRoom(needed);
    wchar_t* const begin = openText();
    length_ = static_cast<std::size_t>(widenUtf8(utf8, length, begin + length_) - begin);
}

// Moves the open text to a larger block. The size is doubled so that long texts move only a few times.
void TextStore::makeRoom(std::size_t characters) {
    const wchar_t* const old = openText();
    arena_.addBlock((length_ == 0 ? characters : 2 * characters) * sizeof(wchar_t));
    if (length_ != 0) std::wmemcpy(openText(), old, length_);
}

const wchar_t* TextStore::finish() {
    wchar_t* const text = openText();
    text[length_] = L'\0';
    arena_.take((length_ + 1) * sizeof(wchar_t));
    length_ = 0;
    return text;
}

const wchar_t* TextStore::add(const char* utf8) {
    append(utf8, std::strlen(utf8));
    return finish();
}

}  // namespace tessa
