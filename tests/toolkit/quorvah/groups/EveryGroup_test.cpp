// Tests of all groups. The most important one: a tree gives data of its own machine, never of the scanning one.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;
namespace fs = std::filesystem;

class EveryGroup : public testing::TestWithParam<const Group*> {};

std::vector<const Group*> gatheredGroups() {
    std::vector<const Group*> groups;
    for (const Group* const group : allGroups()) {
        if (group->gather != nullptr && group != &kScanInfo) groups.push_back(group);
    }
    return groups;
}

INSTANTIATE_TEST_SUITE_P(Groups, EveryGroup, testing::ValuesIn(gatheredGroups()),
                         [](const auto& group) { return std::string(group.param->xmlName); });

TEST_P(EveryGroup, HasNoInstanceInAnEmptyTree) {
    const ScratchDir tree;
    const GroupData data = gatheredBelow(*GetParam(), tree.path());
    EXPECT_TRUE(data.instances().empty());
    EXPECT_LE(data.state(), GroupState::NotApplicable) << data.reason();
}

TEST_P(EveryGroup, RevealsNothingOfTheHostThroughLinks) {
    const ScratchDir tree;
    for (const char* const directory :
         {"proc", "sys", "etc", "run", "usr", "var", "dev", "bin", "sbin", "lib"}) {
        fs::create_symlink(std::string("../../../../../../../../../") + directory, tree.path() / directory);
    }
    EXPECT_TRUE(gatheredBelow(*GetParam(), tree.path()).instances().empty());
}

TEST_P(EveryGroup, AcceptsDirectoriesInPlaceOfFiles) {
    const ScratchDir tree;
    for (const char* const file :
         {"proc/cpuinfo/marker", "proc/meminfo/marker", "proc/stat/marker", "proc/version/marker",
          "proc/self/mountinfo/marker", "etc/os-release/marker", "etc/machine-id/marker",
          "etc/localtime/marker", "etc/hostname/marker", "run/utmp/marker",
          "sys/devices/system/cpu/present/marker", "sys/devices/system/cpu/online/marker",
          "var/lib/dpkg/status/marker", "sys/firmware/dmi/tables/DMI/marker", "proc/net/fib_trie/marker",
          "proc/net/if_inet6/marker", "proc/cmdline/marker", "sys/class/dmi/id/product_uuid/marker"}) {
        tree.write(file, "");
    }
    const GroupData data = gatheredBelow(*GetParam(), tree.path());
    for (const Instance& instance : data.instances()) {
        for (const std::string_view value : instance.values())
            EXPECT_EQ(value.find("marker"), std::string::npos) << value;
    }
}

TEST_P(EveryGroup, HasValuesOfTheDeclaredForm) {
    for (const fs::directory_entry& tree : fs::directory_iterator(QUORVAH_TEST_TREES)) {
        expectForm(gatheredBelow(*GetParam(), tree.path()));
    }
}

TEST(Trees, AContainerImageHasNoProcessorsNorDisks) {
    for (const Group* const group : {&kProcessor, &kPhysicalProcessor, &kMemory, &kStorage, &kDiskPartition,
                                     &kRegional, &kComponentID}) {
        EXPECT_TRUE(gatheredTree(*group, "container").instances().empty()) << group->xmlName;
    }
}

// The tree has empty directories for devices with the names of those of the scanning machine.
TEST(BareTree, HasNoFieldsOfTheScanningMachine) {
    const ScratchDir tree;
    // Every kernel has the loopback. The address is for machines without PCI devices.
    std::vector<std::string> names = {"lo", "0000:00:00.0"};
    for (const char* const folder : {"/sys/class/net", "/sys/bus/pci/devices", "/sys/bus/usb/devices"}) {
        for (std::string& name : Root().list(folder)) names.push_back(std::move(name));
    }
    for (const std::string& name : names) {
        if (name.find(':') != std::string::npos && name.find('-') != std::string::npos) continue;
        std::filesystem::create_directories(tree.path() / "sys/class/net" / name);
        std::filesystem::create_directories(tree.path() / "sys/bus/pci/devices" / name);
        std::filesystem::create_directories(tree.path() / "sys/bus/usb/devices" / name);
    }
    const GroupData adapters = gatheredBelow(kNetworkAdapter, tree.path());
    EXPECT_FALSE(adapters.instances().empty());
    for (const Instance& adapter : adapters.instances()) {
        expectAll(adapters.group(), adapter,
                  {{"DeviceID", std::string(adapter.values().front())}, {"Physical", "false"}});
    }
    const GroupData pci = gatheredBelow(kPCIDevice, tree.path());
    EXPECT_FALSE(pci.instances().empty());
    for (const Instance& device : pci.instances()) {
        for (std::size_t i = 6; i < device.values().size(); ++i) EXPECT_EQ("", device.values()[i]) << i;
    }
    const GroupData usb = gatheredBelow(kUSBDevice, tree.path());
    EXPECT_FALSE(usb.instances().empty());
    for (const Instance& device : usb.instances()) {
        for (std::size_t i = 1; i < device.values().size(); ++i) EXPECT_EQ("", device.values()[i]) << i;
    }
}

// Reads the same files as a tree, whose links are kept inside.
TEST(LiveMachine, HasTheSameDataWhenScannedAsATree) {
    const std::pair<const Group*, std::vector<const char*>> groups[] = {
        {&kProcessor, {"Name", "Family", "Flags", "NumaNode", "L2CacheSize", "EnabledState"}},
        {&kUserAccountInfo, {"Name", "GroupName", "Groups", "HomeDirectory", "LoginShell", "Disabled"}},
        {&kServiceInfo, {"Caption", "StartMode", "PathName", "StartName", "UnitFile"}},
        {&kPartition, {"Name", "Size", "BlockSize", "MountPoint", "Parents"}},
        {&kSerialPort, {"Name", "MaxBaudRate", "UartType", "IoAddress", "Irq", "Driver"}},
        {&kInstalledPatches, {"VersionString", "PreviousVersion", "InstallDate"}},
        {&kPCSystemParams, {"BIOSVersion", "BaseBoardProduct", "FirmwareType", "SecureBoot"}},
        {&kUnixCpuMeter, {}},
        {&kPhysicalProcessor, {"Name", "NumberOfCores", "NumberOfLogicalProcessors", "L3CacheSize"}},
        {&kStorage, {"Size", "InterfaceType", "BusAddress", "BlockSize"}},
        {&kDiskPartition, {"Size", "StartingOffset"}},
        {&kOperatingSystem, {"Caption", "Version", "KernelVersion", "Architecture", "CurrentTimeZone"}},
        {&kRegional, {"Locale", "TimeZoneName", "CurrentTimeZone"}},
        {&kComponentID, {"MachineId", "Name"}},
        {&kMemory, {"TotalVisibleMemorySize", "InstalledMemory"}},
    };
    for (const auto& [group, fields] : groups) {
        const GroupData live = gatheredLive(*group);
        const GroupData tree = gatheredBelow(*group, "/");
        ASSERT_EQ(keysOf(live), keysOf(tree)) << group->xmlName;
        for (std::size_t i = 0; i < live.instances().size(); ++i) {
            for (const char* const field : fields) {
                EXPECT_EQ(live.instances()[i].get(field), tree.instances()[i].get(field))
                    << group->xmlName << " " << field;
            }
        }
    }
}

}  // namespace
}  // namespace toolkit::quorvah
