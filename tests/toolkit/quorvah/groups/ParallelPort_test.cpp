#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(ParallelPort, ReportsThePortsOfTheDriver) {
    const ScratchDir tree;
    const std::string ports = "proc/sys/dev/parport/";
    tree.write(ports + "default/timeslice", "200\n");
    tree.write(ports + "parport0/base-addr", "888\t1912\n");
    tree.write(ports + "parport0/irq", "7\n");
    tree.write(ports + "parport0/dma", "3\n");
    tree.write(ports + "parport0/modes", "PCSPP,TRISTATE,EPP\n");
    tree.write(ports + "parport1/base-addr", "632\t0\n");
    tree.write(ports + "parport1/irq", "none\n");
    tree.write(ports + "parport1/dma", "none\n");
    const GroupData data = gatheredBelow(kParallelPort, tree.path());
    ASSERT_EQ((std::vector<std::string>{"parport0", "parport1"}), keysOf(data));
    expectAll(kParallelPort, data.instances()[0],
              {{"DeviceID", "parport0"},
               {"DMASupport", "true"},
               {"Capabilities", "PCSPP;TRISTATE;EPP"},
               {"IoAddress", "0378"},
               {"Irq", "7"},
               {"DmaChannel", "3"}});
    expectAll(kParallelPort, data.instances()[1],
              {{"DeviceID", "parport1"}, {"DMASupport", "false"}, {"IoAddress", "0278"}});
}

TEST(ParallelPort, CannotBeToldWithoutTheDriver) {
    const ScratchDir tree;
    tree.write("proc/sys/dev/cdrom/info", "");
    const GroupData data = gatheredBelow(kParallelPort, tree.path());
    EXPECT_EQ(GroupState::NotApplicable, data.state());
    EXPECT_EQ("no-driver", data.reason());
}

}  // namespace
}  // namespace toolkit::quorvah
