#include "bench/Words.h"

#include <fmt/format.h>

#include <array>

namespace zavbench {

namespace {

constexpr std::array<const char*, 16> kWords = {
    "library", "shared",    "files", "development", "tools", "support", "for",    "runtime",
    "common",  "documents", "data",  "command",     "line",  "utility", "module", "GNU"};

}  // namespace

std::string words(Numbers& numbers, std::uint32_t count, const char* separator) {
    std::string text = kWords.at(numbers.below(kWords.size()));
    for (std::uint32_t i = 1; i < count; ++i)
        text.append(separator).append(kWords.at(numbers.below(kWords.size())));
    return text;
}

std::string identifier(int number) {
    // Multiplying by an odd number keeps identifiers distinct and makes adjacent ones dissimilar.
    const auto mixed = (static_cast<std::uint64_t>(number) + 1) * 0x9e3779b97f4a7c15U;
    return fmt::format("{:08x}-{:04x}-4{:03x}-8{:03x}-{:012x}", mixed >> 32U, (mixed >> 16U) & 0xffffU,
                       mixed & 0xfffU, (mixed >> 12U) & 0xfffU, number);
}

}  // namespace zavbench
