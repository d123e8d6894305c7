#include "cli/scan/GroupStatus.h"

#include <gtest/gtest.h>

#include "cli/scan/HardwareInventory.h"
#include "tests/cli/ScanInfoExample.h"

namespace zavcli {
namespace {

TEST(GroupStatus, IsTakenFromTheListsOfScanInfo) {
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

TEST(GroupStatus, IsUnknownWithoutAReportOfTheScanner) {
    EXPECT_EQ(GroupState::Unknown, statusOf("Memory", {}).state);
    EXPECT_EQ(GroupState::Unknown, statusOf("Memory", {{"ScannerName", "other"}}).state);
    EXPECT_FALSE(reportsAbilities({{"GroupsComplete", "ScanInfo"}}));
    EXPECT_TRUE(reportsAbilities(kScanInfo));
}

TEST(GroupStatus, ReasonsAreExplainedAndUnknownOnesKept) {
    EXPECT_EQ("it took too long", reasonText("timeout"));
    EXPECT_EQ("there is more data than the scanner reads", reasonText("too-large"));
    EXPECT_EQ("the dpkg database is damaged", reasonText("dpkg-broken"));
    EXPECT_EQ("sunspots", reasonText("sunspots"));
    EXPECT_EQ("-broken", reasonText("-broken"));
}

}  // namespace
}  // namespace zavcli
