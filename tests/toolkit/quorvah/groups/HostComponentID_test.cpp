#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(HostComponentID, ARealMachineCarriesItself) {
    const ScratchDir tree;
    tree.write("sys/class/dmi/id/product_uuid", "4c4c4544-0042-3010-8053-b3c04f4e3132\n");
    tree.write("sys/class/dmi/id/sys_vendor", "Maker\n");
    tree.write("sys/class/dmi/id/product_name", "Model 7\n");
    tree.write("sys/class/dmi/id/product_serial", "S-1\n");
    tree.write("proc/cpuinfo", "processor : 0\nflags : fpu vme\n");
    tree.write("etc/hostname", "alpha\n");
    const GroupData data = gatheredBelow(kHostComponentID, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kHostComponentID, data.instances().front(),
              {{"UUID", "4c4c4544-0042-3010-8053-b3c04f4e3132"},
               {"Manufacturer", "Maker"},
               {"ProductName", "Model 7"},
               {"SerialNumber", "S-1"},
               {"Name", "alpha"},
               {"Source", "self"}});
    tree.write(".dockerenv", "");
    EXPECT_EQ("", gatheredBelow(kHostComponentID, tree.path()).instances().front().get("Name"))
        << "the name is that of the container";
}

TEST(HostComponentID, OfABoardIsTheSameAsTheComponentId) {
    const ScratchDir tree;
    tree.write("sys/firmware/devicetree/base/model", std::string("Pine64 RockPro64 v2.1\0", 22));
    tree.write("sys/firmware/devicetree/base/compatible", std::string("pine64,rockpro64\0", 17));
    expectAll(kHostComponentID, gatheredBelow(kHostComponentID, tree.path()).instances().front(),
              {{"Manufacturer", "Pine64"}, {"ProductName", "Pine64 RockPro64 v2.1"}, {"Source", "self"}});
}

TEST(HostComponentID, AGuestKnowsItsHostOnlyIfTheHypervisorTells) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", "processor : 0\nflags : fpu hypervisor\n");
    tree.write("sys/class/dmi/id/sys_vendor", "QEMU\n");
    const GroupData unknown = gatheredBelow(kHostComponentID, tree.path());
    EXPECT_TRUE(unknown.instances().empty());
    EXPECT_EQ(GroupState::NotApplicable, unknown.state());
    EXPECT_EQ("unknown-host", unknown.reason());
    const auto pair = [](std::string key, std::string value) {
        key.resize(512);
        value.resize(2048);
        return key + value;
    };
    tree.write("var/lib/hyperv/.kvp_pool_3",
               pair("HostName", "short") + pair("PhysicalHostNameFullyQualified", "host.example") + "cut");
    expectAll(kHostComponentID, gatheredBelow(kHostComponentID, tree.path()).instances().front(),
              {{"Name", "host.example"}, {"Source", "kvp"}});
}

TEST(HostComponentID, PartitionsOfLargeMachinesKnowTheMachine) {
    const GroupData z = gatheredTree(kHostComponentID, "s390x");
    ASSERT_EQ(1U, z.instances().size());
    EXPECT_EQ("sysinfo", z.instances().front().get("Source"));
    EXPECT_EQ("IBM", z.instances().front().get("Manufacturer"));
    const ScratchDir tree;
    tree.write("proc/device-tree/host-model", std::string("IBM,9009-42A\0", 13));
    tree.write("proc/device-tree/host-serial", std::string("02782BF50\0", 10));
    expectAll(kHostComponentID, gatheredBelow(kHostComponentID, tree.path()).instances().front(),
              {{"ProductName", "IBM,9009-42A"}, {"SerialNumber", "02782BF50"}, {"Source", "device-tree"}});
}

}  // namespace
}  // namespace toolkit::quorvah
