#include "toolkit/quorvis/report/OutputBound.h"

#include <algorithm>

namespace toolkit::quorvis {

namespace {

// What a tree of wide texts takes: a reader may refuse one of 1 GiB.
constexpr std::uint64_t kMost = std::uint64_t{768} << 20;
constexpr std::uint64_t kOfByte = 4;
constexpr std::uint64_t kOfTag = 160;
constexpr std::uint64_t kOfAttribute = 64;

}  // namespace

bool OutputBound::admits(std::string_view element) {
    const auto count = [element](char c) {
        return static_cast<std::uint64_t>(std::ranges::count(element, c));
    };
    const std::uint64_t cost = kOfByte * element.size() + kOfTag * count('<') + kOfAttribute * count('=');
    if (cost > kMost - held_) return false;
    held_ += cost;
    return true;
}

}  // namespace toolkit::quorvis
