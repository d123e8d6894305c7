// What the summary says needs attention.
#include <gtest/gtest.h>

#include "cli/formats/SummaryWriter.h"

namespace zavcli {
namespace {

using Lines = std::vector<std::string>;

Lines attention(const std::string& group, std::vector<Instance> instances, GroupStatus status = {}) {
    HardwareInventory inventory;
    inventory.groups.push_back({0, group, std::move(instances), std::move(status)});
    return attentionLines(inventory);
}

Instance drive(const char* type, const char* size, const char* free, const char* readOnly = "false") {
    return {{"Root", "/data"},
            {"FileSystemType", type},
            {"FileSystemSize", size},
            {"AvailableSpace", free},
            {"ReadOnly", readOnly}};
}

TEST(Attention, GivenAFileSystemWithATenthFreeNothingIsSaid) {
    EXPECT_EQ(Lines(), attention("LogicalDrive", {drive("ext4", "1000000000", "100000000")}));
    EXPECT_EQ(Lines{"/data is nearly full: 100 MB of 1 GB are free"},
              attention("LogicalDrive", {drive("ext4", "1000000000", "99999999")}));
}

TEST(Attention, ImagesAndUnknownSizesAreNotNearlyFull) {
    EXPECT_EQ(Lines(), attention("LogicalDrive", {drive("squashfs", "1000000000", "0"),
                                                  drive("ext4", "1000000000", "0", "true"),
                                                  drive("nfs4", "", ""), drive("ext4", "0", "0")}));
}

TEST(Attention, GivenFewFreeInodesTheFileSystemIsNamed) {
    EXPECT_EQ(Lines{"/ has nearly no room for files: 99 of 1000 inodes are free"},
              attention("LogicalDrive", {{{"Root", "/"}, {"InodesTotal", "1000"}, {"InodesFree", "99"}}}));
}

TEST(Attention, OfflineProcessorsAreNamedOrCounted) {
    const Instance online{{"DeviceID", "cpu0"}, {"EnabledState", "Enabled"}};
    const Instance offline{{"DeviceID", "cpu1"}, {"EnabledState", "Disabled"}};
    EXPECT_EQ(Lines(), attention("Processor", {online}));
    EXPECT_EQ(Lines{"offline: cpu1"}, attention("Processor", {online, offline}));
    EXPECT_EQ(Lines{"9 processors are offline"}, attention("Processor", std::vector<Instance>(9, offline)));
}

TEST(Attention, MixedMemoryModulesAreReported) {
    const Instance one{{"Capacity", "17179869184"}, {"MemoryType", "DDR4"}, {"Speed", "3200"}};
    const Instance other{{"Capacity", "8589934592"}, {"MemoryType", "DDR4"}, {"Speed", "2666"}};
    const Instance empty{{"Capacity", "0"}};
    EXPECT_EQ(Lines(), attention("MemoryModules", {one, one, empty}));
    EXPECT_EQ((Lines{"memory modules of different sizes: 16 GiB, 8 GiB",
                     "memory modules of different speeds: 2666 MT/s, 3200 MT/s"}),
              attention("MemoryModules", {one, other}));
}

TEST(Attention, GivenLessMemoryThanInstalledAModuleMayHaveFailed) {
    const auto memory = [](const char* visible) {
        return attention("Memory", {{{"InstalledMemory", "33554432"}, {"TotalVisibleMemorySize", visible}}});
    };
    EXPECT_EQ(Lines(), memory("32800000"));
    EXPECT_EQ(Lines{"32 GiB of memory are installed, but the system sees 16 GiB: a module may have failed"},
              memory("16777216"));
}

TEST(Attention, IncompleteGroupsSayWhy) {
    EXPECT_EQ(Lines{"incomplete: Storage (permission denied)"},
              attention("Storage", {}, {GroupState::Partial, "permission"}));
    EXPECT_EQ(Lines{"could not be read: Storage (permission denied)"},
              attention("Storage", {}, {GroupState::Unread, "permission"}));
    EXPECT_EQ(Lines(), attention("Storage", {}, {GroupState::NotApplicable, "no-source"}));
}

}  // namespace
}  // namespace zavcli
