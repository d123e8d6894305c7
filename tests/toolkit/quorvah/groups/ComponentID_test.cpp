#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(ComponentID, ReadsTheFirmwareTextsWithoutPlaceholders) {
    expectOnly(kComponentID, "x86-server",
               {{"UUID", "4c4c4544-0036-4a10-8052-b4c04f4b4d32"},
                {"Manufacturer", "Example Servers, Inc."},
                {"ProductName", "ES-2630"},
                {"SerialNumber", "CZ3402ABCD"},
                {"SKUNumber", "SKU=0716"},
                {"Name", "db1.example.com"},
                {"MachineId", "8d3c1e0bd33e4c7e9a60f1b2c3d4e5f6"},
                {"BootId", "0b5b6a44-3a4b-4c2d-8d0e-1f2a3b4c5d6e"}});
}

TEST(ComponentID, KeepsPlaceholdersWhenAskedTo) {
    const GroupData data = gatheredTree(kComponentID, "x86-server", true);
    EXPECT_EQ(data.instances().front().get("Version"), "Default string");
    EXPECT_EQ(data.instances().front().get("Family"), "To be filled by O.E.M.");
}

TEST(ComponentID, ReadsADeviceTree) {
    expectOnly(kComponentID, "arm64-board",
               {{"ProductName", "Example Board Model 4 Rev 1.1"},
                {"SerialNumber", "10000000abcdef01"},
                {"Name", "board"}});
}

TEST(ComponentID, ReadsTheSysinfoOfAnS390x) {
    expectOnly(kComponentID, "s390x",
               {{"Manufacturer", "IBM"},
                {"ProductName", "2964"},
                {"Version", "701"},
                {"SerialNumber", "00000000000A1B2C"}});
}

TEST(ComponentIDLive, MatchesTheFilesOfTheSystem) {
    const GroupData data = gatheredLive(kComponentID);
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("Name"), lineOf("uname -n"));
    EXPECT_EQ(data.instances().front().get("MachineId"), lineOf("cat /etc/machine-id 2>/dev/null || true"));
    EXPECT_EQ(data.instances().front().get("BootId"), lineOf("cat /proc/sys/kernel/random/boot_id"));
}

}  // namespace
}  // namespace toolkit::quorvah
