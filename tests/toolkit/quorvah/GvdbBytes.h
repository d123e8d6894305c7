// A database of dconf for tests.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace toolkit::quorvah {

inline std::string gvdbWord(std::uint64_t number, int width = 4) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFFU);
    return bytes;
}

// A file with these keys and serialised variants. Each key is an item below one for "/".
inline std::string gvdbFile(const std::vector<std::pair<std::string, std::string>>& values) {
    constexpr std::size_t kHeader = 24;
    const std::size_t count = values.size() + 1;
    const std::size_t tableSize = 8 + 4 + 24 * count;  // one bucket
    std::string texts = "/";
    const auto place = [&](std::size_t at) { return kHeader + tableSize + at; };
    std::string items = gvdbWord(0) + gvdbWord(0xFFFFFFFF) + gvdbWord(place(0)) + gvdbWord(1, 2) + "L" +
                        std::string(1, '\0') + gvdbWord(0) + gvdbWord(0);
    for (const auto& [key, value] : values) {
        const std::size_t at = texts.size();
        texts += key.substr(1) + value;
        const std::size_t begin = place(at + key.size() - 1);
        items += gvdbWord(0) + gvdbWord(0) + gvdbWord(place(at)) + gvdbWord(key.size() - 1, 2) + "v" +
                 std::string(1, '\0') + gvdbWord(begin) + gvdbWord(begin + value.size());
    }
    return "GVariant" + gvdbWord(0) + gvdbWord(0) + gvdbWord(kHeader) + gvdbWord(kHeader + tableSize) +
           gvdbWord(0) + gvdbWord(1) + gvdbWord(0) + items + texts;
}

inline std::string gvdbFlag(bool value) {
    return std::string(value ? "\x01" : "\0", 1) + std::string("\0b", 2);
}

inline std::string gvdbNumber(std::uint32_t number) {
    return gvdbWord(number) + std::string("\0u", 2);
}

}  // namespace toolkit::quorvah
