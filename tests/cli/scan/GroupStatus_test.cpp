#include "cli/scan/GroupStatus.h"

#include <gtest/gtest.h>

#include "cli/commands/HardwareRemarks.h"
#include "cli/scan/Model.h"

namespace zavcli {
namespace {

const Instance kScanInfo{{"GroupsRequested", "Memory;Modem;SoftwarePackages;Printer"},
                         {"GroupsComplete", "Modem;ScanInfo"},
                         {"GroupsPartial", "Memory=permission"},
                         {"GroupsUnread", "SoftwarePackages=rpm-broken;Storage=timeout"},
                         {"GroupsNotApplicable", "WinCluster=windows"},
                         {"GroupsUnsupported", "Printer;Keyboard"}};

TEST(GroupStatus, IsWhatTheListsOfScanInfoSay) {
    const struct {
        const char* group;
        GroupState state;
        const char* reason;
    } cases[] = {{"Modem", GroupState::Complete, ""},
                 {"Memory", GroupState::Partial, "permission"},
                 {"SoftwarePackages", GroupState::Unread, "rpm-broken"},
                 {"Storage", GroupState::Unread, "timeout"},
                 {"WinCluster", GroupState::NotApplicable, "windows"},
                 {"Keyboard", GroupState::Unsupported, ""},
                 {"Mode", GroupState::Unknown, ""},
                 {"", GroupState::Unknown, ""}};
    for (const auto& [group, state, reason] : cases) {
        EXPECT_EQ(state, statusOf(group, kScanInfo).state) << group;
        EXPECT_EQ(reason, statusOf(group, kScanInfo).reason) << group;
    }
}

TEST(GroupStatus, IsUnknownWhereTheScannerDoesNotTell) {
    EXPECT_EQ(GroupState::Unknown, statusOf("Memory", {}).state);
    EXPECT_EQ(GroupState::Unknown, statusOf("Memory", {{"ScannerName", "other"}}).state);
    EXPECT_FALSE(tellsOfAbilities({{"GroupsComplete", "ScanInfo"}}));
    EXPECT_TRUE(tellsOfAbilities(kScanInfo));
}

TEST(GroupStatus, ReasonsAreExplainedAndUnknownOnesShownAsTheyAre) {
    EXPECT_EQ("it took too long", explained("timeout"));
    EXPECT_EQ("the dpkg database is damaged", explained("dpkg-broken"));
    EXPECT_EQ("sunspots", explained("sunspots"));
    EXPECT_EQ("-broken", explained("-broken"));
}

Inventory inventoryOf(const GroupStatus& status) {
    Inventory inventory;
    inventory.groups = {{3, "Memory", {}, status}};
    return inventory;
}

TEST(HardwareRemarks, NameGroupsByWhatBecameOfThem) {
    Inventory inventory;
    for (const char* name :
         {"Modem", "Memory", "SoftwarePackages", "Storage", "WinCluster", "Printer", "Other"})
        inventory.groups.push_back({1, name, {}, statusOf(name, kScanInfo)});
    EXPECT_EQ((std::vector<std::string>{"could not be read: SoftwarePackages: the rpm database is damaged",
                                        "could not be read: Storage: it took too long",
                                        "incomplete: Memory: permission denied; root may read it",
                                        "not applicable here: WinCluster",
                                        "not implemented by this scanner: Printer"}),
              remarksOn(inventory));
}

TEST(HardwareRemarks, SayWhatIsLacking) {
    const struct {
        GroupStatus status;
        bool lacking;
        bool lackingWhenNamed;
    } cases[] = {{{GroupState::Complete, ""}, false, false},
                 {{GroupState::Unknown, ""}, false, false},
                 {{GroupState::NotApplicable, "windows"}, false, false},
                 {{GroupState::Unsupported, ""}, false, true},
                 {{GroupState::Partial, "permission"}, false, false},
                 {{GroupState::Partial, "rpm-broken"}, true, true},
                 {{GroupState::Unread, "permission"}, true, true}};
    for (const auto& [status, lacking, lackingWhenNamed] : cases) {
        EXPECT_EQ(lacking, lacksWhatWasAskedFor(inventoryOf(status), false)) << wordOf(status.state);
        EXPECT_EQ(lackingWhenNamed, lacksWhatWasAskedFor(inventoryOf(status), true)) << wordOf(status.state);
    }
}

}  // namespace
}  // namespace zavcli
