#include "cli/scan/GroupNames.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

#include "cli/scan/SimilarNames.h"
#include "cli/system/Failure.h"

namespace zavcli {

namespace {

bool parseNumber(std::string_view text, int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
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
    const std::string name = normalizedName(text);
    for (const GroupName& group : groups) {
        if (byId ? group.id == id : normalizedName(group.name) == name) return group;
    }
    return std::nullopt;
}

std::vector<std::string> similarGroups(const std::vector<GroupName>& groups, std::string_view text) {
    std::vector<std::string> names;
    names.reserve(groups.size());
    for (const GroupName& group : groups) names.push_back(group.name);
    return similarNames(names, text);
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
