#include "toolkit/quorvah/sources/MemoryMaker.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/sources/JedecMakers.h"

namespace toolkit::quorvah {

namespace {

// The bytes that the hexadecimal digits of a text stand for; none if it has other characters.
std::vector<unsigned> bytesOf(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    std::vector<unsigned> bytes;
    if (text.size() < 4 || text.size() % 2 != 0 || text.size() > 32) return bytes;
    for (; !text.empty(); text.remove_prefix(2)) {
        unsigned byte = 0;
        if (std::from_chars(text.data(), text.data() + 2, byte, 16).ptr != text.data() + 2) return {};
        bytes.push_back(byte);
    }
    return bytes;
}

}  // namespace

std::string memoryMaker(unsigned page, unsigned code) {
    if (code > 0xFF || std::popcount(code) % 2 == 0) return {};
    return std::string(jedecMaker(page, code & 0x7FU));
}

std::string memoryMaker(std::string text) {
    constexpr unsigned kNextPage = 0x7F;
    const std::vector<unsigned> bytes = bytesOf(text);
    if (bytes.empty()) return text;
    std::string name;
    if (bytes.front() == kNextPage) {
        const auto code = std::ranges::find_if(bytes, [](unsigned byte) { return byte != kNextPage; });
        if (code != bytes.end()) name = memoryMaker(static_cast<unsigned>(code - bytes.begin()), *code);
    } else {
        // The page with a parity bit, then the code; in older forms the code only.
        name = memoryMaker(bytes[0] & 0x7FU, bytes[1]);
        if (name.empty() && bytes[1] == 0) name = memoryMaker(0, bytes[0]);
    }
    return name.empty() ? text : name;
}

}  // namespace toolkit::quorvah
