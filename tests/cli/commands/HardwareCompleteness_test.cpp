#include "cli/commands/HardwareCompleteness.h"

#include <gtest/gtest.h>

#include "tests/cli/ScanInfoExample.h"

namespace zavcli {
namespace {

HardwareInventory inventoryOf(const GroupStatus& status) {
    HardwareInventory inventory;
    inventory.groups = {{3, "Memory", {}, status}};
    return inventory;
}

TEST(HardwareCompleteness, MessagesListGroupsByStatusAndReason) {
    HardwareInventory inventory;
    for (const char* name :
         {"Modem", "Memory", "SoftwarePackages", "Storage", "WinCluster", "Printer", "Other"})
        inventory.groups.push_back({1, name, {}, statusOf(name, kScanInfo)});
    EXPECT_EQ((std::vector<std::string>{"could not be read: SoftwarePackages: the rpm database is damaged",
                                        "could not be read: Storage: it took too long",
                                        "incomplete: Memory: permission denied; root may read it",
                                        "not applicable here: WinCluster",
                                        "not implemented by this scanner: Printer"}),
              completenessMessages(inventory));
}

TEST(HardwareCompleteness, RootIsNotToldThatRootMayReadIt) {
    HardwareInventory inventory = inventoryOf({GroupState::Partial, "permission"});
    inventory.scanInfo = {{"Privileged", "true"}};
    EXPECT_EQ(std::vector<std::string>{"incomplete: Memory: permission denied"},
              completenessMessages(inventory));
    inventory.scanInfo = {{"Privileged", "false"}};
    EXPECT_EQ(std::vector<std::string>{"incomplete: Memory: permission denied; root may read it"},
              completenessMessages(inventory));
}

TEST(HardwareCompleteness, MissingRequestedDataIsDetected) {
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
                 {{GroupState::Partial, "home-refused"}, false, false},
                 {{GroupState::Unread, "timeout"}, true, true},
                 {{GroupState::Unread, "permission"}, false, true}};
    for (const auto& [status, lacking, lackingWhenNamed] : cases) {
        EXPECT_EQ(lacking, lacksRequestedData(inventoryOf(status), false)) << statusWord(status.state);
        EXPECT_EQ(lackingWhenNamed, lacksRequestedData(inventoryOf(status), true))
            << statusWord(status.state);
    }
}

}  // namespace
}  // namespace zavcli
