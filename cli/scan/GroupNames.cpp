#include "cli/scan/GroupNames.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxSuggestions = 3;

// The name without the differences that findGroup ignores.
std::string normalized(std::string_view name) {
    std::string text = lowerCase(name);
    std::erase_if(text, [](char byte) { return byte == ' ' || byte == '-' || byte == '_'; });
    return text;
}

bool parseNumber(std::string_view text, int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

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

std::string unknownGroupMessage(const std::vector<GroupName>& groups, std::string_view text) {
    const std::vector<std::string> similar = similarGroups(groups, text);
    if (similar.empty()) return fmt::format("unknown group '{}'; 'zav groups' lists all", text);
    return fmt::format("unknown group '{}'; did you mean {}? 'zav groups' lists all", text,
                       fmt::join(similar, " or "));
}

}  // namespace

std::optional<GroupName> findGroup(const std::vector<GroupName>& groups, std::string_view text) {
    int id = 0;
    const bool byId = parseNumber(text, id);
    const std::string name = normalized(text);
    for (const GroupName& group : groups) {
        if (byId ? group.id == id : normalized(group.name) == name) return group;
    }
    return std::nullopt;
}

std::vector<std::string> similarGroups(const std::vector<GroupName>& groups, std::string_view text) {
    const std::string wanted = normalized(text);
    if (wanted.empty()) return {};
    std::vector<std::pair<std::size_t, std::string>> ranked;
    for (const GroupName& group : groups) {
        const std::string name = normalized(group.name);
        const bool contained = wanted.size() >= 3 && name.find(wanted) != std::string::npos;
        const std::size_t rank = contained ? 1 : editDistance(wanted, name);
        if (rank <= std::max<std::size_t>(2, wanted.size() / 3)) ranked.emplace_back(rank, group.name);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (const auto& [rank, name] : ranked) {
        if (names.size() < kMaxSuggestions) names.push_back(name);
    }
    return names;
}

std::vector<GroupName> chooseGroups(const std::vector<GroupName>& groups,
                                    const std::vector<std::string>& wanted) {
    if (wanted.empty()) return groups;
    std::vector<GroupName> chosen;
    for (const std::string& text : wanted) {
        const std::optional<GroupName> group = findGroup(groups, text);
        if (!group) throw Failure(kExitBadUsage, unknownGroupMessage(groups, text));
        const auto sameId = [&](const GroupName& other) { return other.id == group->id; };
        if (std::none_of(chosen.begin(), chosen.end(), sameId)) chosen.push_back(*group);
    }
    return chosen;
}

}  // namespace zavcli
