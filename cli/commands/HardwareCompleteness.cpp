#include "cli/commands/HardwareCompleteness.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <string_view>

namespace zavcli {

namespace {

// What other users of the machine keep from the scanner.
constexpr std::string_view kPermission = "permission";
constexpr std::string_view kHomeRefused = "home-refused";

// Names of groups by reason.
using Reasons = std::map<std::string, std::vector<std::string>>;

Reasons groupsIn(const HardwareInventory& inventory, GroupState state) {
    Reasons reasons;
    for (const Group& group : inventory.groups) {
        if (group.status.state == state) reasons[group.status.reason].push_back(group.name);
    }
    return reasons;
}

// In a container, some files are closed to root as well.
std::string describe(const std::string& reason, const HardwareInventory& inventory) {
    const bool byRoot = valueOf(inventory.scanInfo, "Privileged") == "true";
    return reasonText(reason) + (reason == kPermission && !byRoot ? "; root may read it" : "");
}

// A group that only root may read is lacking if the user asks for it by name.
bool isLacking(const GroupStatus& status, bool named) {
    const bool kept = status.reason == kPermission || status.reason == kHomeRefused;
    switch (status.state) {
        case GroupState::Unread:
            return named || !kept;
        case GroupState::Partial:
            return !kept;
        case GroupState::Unsupported:
            return named;
        default:
            return false;
    }
}

}  // namespace

std::vector<std::string> completenessMessages(const HardwareInventory& inventory) {
    std::vector<std::string> lines;
    const auto add = [&](GroupState state, std::string_view lead, bool withReason) {
        std::vector<std::string> all;
        for (const auto& [reason, names] : groupsIn(inventory, state)) {
            if (withReason)
                lines.push_back(
                    fmt::format("{}: {}: {}", lead, fmt::join(names, ", "), describe(reason, inventory)));
            else
                all.insert(all.end(), names.begin(), names.end());
        }
        if (!all.empty()) lines.push_back(fmt::format("{}: {}", lead, fmt::join(all, ", ")));
    };
    add(GroupState::Unread, "could not be read", true);
    add(GroupState::Partial, "incomplete", true);
    add(GroupState::NotApplicable, "not applicable here", false);
    add(GroupState::Unsupported, "not implemented by this scanner", false);
    return lines;
}

bool lacksRequestedData(const HardwareInventory& inventory, bool named) {
    return std::any_of(inventory.groups.begin(), inventory.groups.end(),
                       [named](const Group& group) { return isLacking(group.status, named); });
}

}  // namespace zavcli
