#include "toolkit/quorvah/sources/MemoryMaker.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

namespace {

struct Maker {
    unsigned page;
    unsigned code;
    const char* name;
};

constexpr Maker kMakers[] = {
    {0, 0x01, "AMD"},      {0, 0x04, "Fujitsu"},       {0, 0x10, "NEC"},
    {0, 0x2C, "Micron"},   {0, 0x89, "Intel"},         {0, 0x97, "Texas Instruments"},
    {0, 0x98, "Kioxia"},   {0, 0xA4, "IBM"},           {0, 0xAD, "SK hynix"},
    {0, 0xC1, "Infineon"}, {0, 0xCE, "Samsung"},       {1, 0x4F, "Transcend"},
    {1, 0x7A, "Apacer"},   {1, 0x94, "SMART Modular"}, {1, 0x98, "Kingston"},
    {1, 0xBA, "PNY"},      {2, 0x9E, "Corsair"},       {2, 0xFE, "Elpida"},
    {3, 0x0B, "Nanya"},    {4, 0x43, "Ramaxel"},       {4, 0xCB, "ADATA"},
    {4, 0xCD, "G.Skill"},  {4, 0xEF, "Team Group"},    {5, 0x02, "Patriot"},
    {5, 0x51, "Qimonda"},  {5, 0x9B, "Crucial"},
};

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
    for (const Maker& maker : kMakers) {
        if (maker.page == page && maker.code == code) return maker.name;
    }
    return {};
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
