#include "cli/scan/GroupStatus.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace zavcli {

namespace {

struct List {
    std::string_view field;
    GroupState state;
};

// A group that is in several lists has the state of the first one.
constexpr std::array<List, 5> kLists{{{"GroupsUnread", GroupState::Unread},
                                      {"GroupsPartial", GroupState::Partial},
                                      {"GroupsUnsupported", GroupState::Unsupported},
                                      {"GroupsNotApplicable", GroupState::NotApplicable},
                                      {"GroupsComplete", GroupState::Complete}}};

constexpr std::array<std::pair<std::string_view, std::string_view>, 24> kReasons{{
    {"permission", "permission denied"},
    {"timeout", "it took too long"},
    {"memory", "memory ran out"},
    {"failed", "the scanner failed while reading it"},
    {"limit", "there is more data than the scanner reads"},
    {"too-large", "there is more data than the scanner reads"},
    {"not-local", "part of it is on a file system of another machine or of a program, which may not answer"},
    {"netlink", "the kernel did not answer"},
    {"other-namespace", "some network interfaces are those of another namespace"},
    {"no-source", "this machine does not provide the data"},
    {"not-in-tree", "the scanned directory does not contain the data"},
    {"no-database", "there is no package database of a known format"},
    {"windows", "Windows only"},
    {"other-system", "other operating systems only"},
    {"other-processor", "other processors only"},
    {"no-smbios", "no SMBIOS tables are visible here"},
    {"smbios-broken", "the SMBIOS tables are damaged"},
    {"guest-broken", "the configuration of a virtual machine is damaged"},
    {"home-refused", "a home directory has links, special files or huge files, or is not local"},
    {"logs-broken", "a log of package upgrades is damaged or too large"},
    {"logins-broken", "a record of logins is damaged or too large"},
    {"no-driver", "no driver for such devices is loaded"},
    {"no-ipx", "this kernel has no IPX"},
    {"unknown-host", "the hypervisor does not tell which machine it runs on"},
}};

constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kDatabaseReasons{{
    {"-broken", "the {} database is damaged"},
    {"-unreadable", "the {} database cannot be read"},
    {"-timeout", "reading the {} database took too long"},
    {"-unsupported", "the {} database has a format that the scanner cannot read"},
    {"-unsaved", "the {} database has changes that are not saved in it yet"},
    {"-too-large", "the {} database holds more data than the scanner reads"},
}};

// The reason of the group in a list such as "Memory=permission;Printer". Nothing if the group is not in the list.
std::optional<std::string> reasonIn(std::string_view list, std::string_view group) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        const std::string_view entry = list.substr(0, end);
        list.remove_prefix(std::min(end + 1, list.size()));
        const std::size_t equals = std::min(entry.find('='), entry.size());
        if (entry.substr(0, equals) == group)
            return std::string(entry.substr(std::min(equals + 1, entry.size())));
    }
    return std::nullopt;
}

}  // namespace

std::string_view statusWord(GroupState state) {
    switch (state) {
        case GroupState::Complete:
            return "complete";
        case GroupState::Partial:
            return "partial";
        case GroupState::Unread:
            return "unread";
        case GroupState::NotApplicable:
            return "not-applicable";
        case GroupState::Unsupported:
            return "unsupported";
        case GroupState::Unknown:
            break;
    }
    return "unknown";
}

std::string reasonText(std::string_view reason) {
    for (const auto& [word, text] : kReasons) {
        if (word == reason) return std::string(text);
    }
    for (const auto& [ending, text] : kDatabaseReasons) {
        if (reason.size() > ending.size() && reason.ends_with(ending))
            return fmt::format(fmt::runtime(text), reason.substr(0, reason.size() - ending.size()));
    }
    return std::string(reason);
}

bool reportsAbilities(const std::vector<Field>& scanInfo) {
    return findField(scanInfo, "GroupsUnsupported") != nullptr;
}

GroupStatus statusOf(std::string_view group, const std::vector<Field>& scanInfo) {
    for (const List& list : kLists) {
        std::optional<std::string> reason = reasonIn(valueOf(scanInfo, list.field), group);
        if (!reason) continue;
        if (list.state == GroupState::Partial && *reason == "unsupported")
            return {GroupState::Unsupported, ""};
        return {list.state, *std::move(reason)};
    }
    return {};
}

}  // namespace zavcli
