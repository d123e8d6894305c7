#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace toolkit {

// A number in big-endian bytes.
inline std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

// Texts with a NUL after each.
inline std::string texts(std::initializer_list<const char*> list) {
    std::string bytes;
    for (const char* const text : list) bytes.append(text) += '\0';
    return bytes;
}

// An entry of an rpm header: its tag, the type of its values, and the bytes of `count` values.
struct RpmEntry {
    unsigned tag;
    unsigned type;
    std::string data;
    unsigned count = 1;
};

// The header of an rpm package as it is in the database.
inline std::string rpmHeader(const std::vector<RpmEntry>& entries) {
    std::string index;
    std::string store;
    for (const RpmEntry& entry : entries) {
        index +=
            number(entry.tag, 4) + number(entry.type, 4) + number(store.size(), 4) + number(entry.count, 4);
        store += entry.data;
    }
    return number(entries.size(), 4) + number(store.size(), 4) + index + store;
}

}  // namespace toolkit
