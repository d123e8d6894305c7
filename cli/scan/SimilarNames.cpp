#include "cli/scan/SimilarNames.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxSuggestions = 3;
constexpr std::size_t kShort = 3;

// The Levenshtein distance.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char character : a) {
        std::size_t diagonal = row[0]++;
        for (std::size_t i = 0; i < b.size(); ++i) {
            const std::size_t changed = diagonal + (character == b[i] ? 0 : 1);
            diagonal = std::exchange(row[i + 1], std::min({row[i] + 1, row[i + 1] + 1, changed}));
        }
    }
    return row.back();
}

}  // namespace

std::string normalizedName(std::string_view name) {
    std::string text = lowerCase(name);
    std::erase_if(text, [](char byte) { return byte == ' ' || byte == '-' || byte == '_'; });
    return text;
}

std::vector<std::string> similarNames(const std::vector<std::string>& names, std::string_view text) {
    const std::string wanted = normalizedName(text);
    if (wanted.empty()) return {};
    std::vector<std::pair<std::size_t, std::string>> ranked;
    for (const std::string& candidate : names) {
        const std::string name = normalizedName(candidate);
        const bool contained = wanted.size() >= 3 && name.find(wanted) != std::string::npos;
        const std::size_t rank = contained ? 1 : editDistance(wanted, name);
        // Two changes make any short word of another one.
        const std::size_t most = wanted.size() <= kShort ? 1 : std::max<std::size_t>(2, wanted.size() / 3);
        if (rank <= most && rank < wanted.size()) ranked.emplace_back(rank, candidate);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> similar;
    for (const auto& [rank, name] : ranked) {
        if (similar.size() < kMaxSuggestions) similar.push_back(name);
    }
    return similar;
}

}  // namespace zavcli
