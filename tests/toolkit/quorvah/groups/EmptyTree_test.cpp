// A tree tells of its own machine and never of the one that scans it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Expectations.h"

using namespace toolkit::quorvah;
namespace fs = std::filesystem;

namespace {

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

}  // namespace

TEST_P(EveryGroup, HasNoInstanceInAnEmptyTree) {
    const zavtest::ScratchDir tree;
    const Report report = gatherFrom(*GetParam(), tree.path());
    EXPECT_TRUE(report.instances().empty());
    EXPECT_LE(report.state(), GroupState::NotApplicable) << report.reason();
}

TEST_P(EveryGroup, TellsNothingOfTheHostThroughLinksThatLeadOut) {
    const zavtest::ScratchDir tree;
    for (const char* const directory :
         {"proc", "sys", "etc", "run", "usr", "var", "dev", "bin", "sbin", "lib"}) {
        fs::create_symlink(std::string("../../../../../../../../../") + directory, tree.path() / directory);
    }
    EXPECT_TRUE(gatherFrom(*GetParam(), tree.path()).instances().empty());
}

TEST_P(EveryGroup, TakesAnyTreeThatHasDirectoriesForFiles) {
    const zavtest::ScratchDir tree;
    for (const char* const file :
         {"proc/cpuinfo/marker", "proc/meminfo/marker", "proc/stat/marker", "proc/version/marker",
          "proc/self/mountinfo/marker", "etc/os-release/marker", "etc/machine-id/marker",
          "etc/localtime/marker", "etc/hostname/marker", "run/utmp/marker",
          "sys/devices/system/cpu/present/marker", "sys/devices/system/cpu/online/marker",
          "var/lib/dpkg/status/marker", "sys/firmware/dmi/tables/DMI/marker", "proc/net/fib_trie/marker",
          "proc/net/if_inet6/marker", "proc/cmdline/marker", "sys/class/dmi/id/product_uuid/marker"}) {
        tree.write(file, "");
    }
    const Report report = gatherFrom(*GetParam(), tree.path());
    for (const Instance& instance : report.instances()) {
        for (const std::string_view value : instance.values())
            EXPECT_EQ(value.find("marker"), std::string::npos) << value;
    }
}

TEST(Trees, AContainerImageHasNoProcessorsNorDisks) {
    for (const Group* const group : {&kProcessor, &kPhysicalProcessor, &kMemory, &kStorage, &kDiskPartition,
                                     &kRegional, &kComponentID}) {
        EXPECT_TRUE(gatherTree(*group, "container").instances().empty()) << group->xmlName;
    }
}
