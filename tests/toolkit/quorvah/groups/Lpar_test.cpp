#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(Lpar, ReportsAPartitionOfAPowerMachine) {
    const ScratchDir tree;
    tree.write(
        "proc/ppc64/lparcfg",
        "lparcfg 1.9\nserial_number=IBM,0210ABCDE\nsystem_type=IBM,8286-42A\npartition_id=5\n"
        "MinMem=2048\nDesMem=8192\npartition_max_entitled_capacity=400\n"
        "system_potential_processors=16\nMaxMem=17179869184\npartition_entitled_capacity=40\n"
        "system_active_processors=14\npartition_active_processors=4\npartition_potential_processors=8\n"
        "capped=0\nshared_processor_mode=1\n");
    tree.write("proc/device-tree/ibm,partition-name", std::string("db01\0", 5));
    const GroupData data = gatheredBelow(kLpar, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kLpar, data.instances().front(),
              {{"PartitionId", "5"},
               {"PartitionName", "db01"},
               {"SerialNumber", "IBM,0210ABCDE"},
               {"SystemType", "IBM,8286-42A"},
               {"SharedProcessorMode", "true"},
               {"Capped", "false"},
               {"EntitledCapacity", "40"},
               {"MaxEntitledCapacity", "400"},
               {"ActiveProcessors", "4"},
               {"PotentialProcessors", "8"},
               {"SystemProcessors", "16"},
               {"MinimumMemory", "2147483648"},
               {"DesiredMemory", "8589934592"},
               {"MaximumMemory", "17179869184"}});
}

TEST(Lpar, ReportsAPartitionOfAnS390xMachine) {
    const ScratchDir tree;
    tree.write(
        "proc/sysinfo",
        "Manufacturer:         IBM\nType:                 3906\nSequence Code:        00000000000AB1CD\n"
        "CPUs Total:           27\n\nLPAR Number:          30\nLPAR Characteristics: Dedicated Shared\n"
        "LPAR Name:            ZLX03\nLPAR Adjustment:      105\nLPAR CPUs Total:      8\n"
        "LPAR CPUs Configured: 6\nLPAR CPUs Standby:    2\n");
    const GroupData data = gatheredBelow(kLpar, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kLpar, data.instances().front(),
              {{"PartitionId", "30"},
               {"PartitionName", "ZLX03"},
               {"SerialNumber", "00000000000AB1CD"},
               {"SystemType", "3906"},
               {"SharedProcessorMode", "true"},
               {"ActiveProcessors", "6"},
               {"PotentialProcessors", "8"},
               {"SystemProcessors", "27"},
               {"CapacityAdjustment", "105"},
               {"Characteristics", "Dedicated;Shared"}});
}

TEST(Lpar, UsesTheDeviceTreeWithoutTheKernelsFile) {
    const ScratchDir tree;
    tree.write("proc/device-tree/ibm,partition-no", std::string("\0\0\x01\x02", 4));
    tree.write("proc/device-tree/ibm,partition-name", std::string("web\0", 4));
    expectAll(kLpar, gatheredBelow(kLpar, tree.path()).instances().front(),
              {{"PartitionId", "258"}, {"PartitionName", "web"}});
}

TEST(Lpar, DoesNotApplyToOtherMachines) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", "processor : 0\n");
    EXPECT_EQ("other-processor", gatheredBelow(kLpar, tree.path()).reason());
}

}  // namespace
}  // namespace toolkit::quorvah
