#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(IPXAddress, ReportsTheInterfacesOfAnOldKernel) {
    const ScratchDir tree;
    tree.write("proc/net/ipx/interface",
               "Network    Node_Address   Primary  Device     Frame_Type\n"
               "0000ABCD   00A0C9112233   Yes      eth0       802.3\n"
               "not an interface\n");
    const GroupData data = gatheredBelow(kIPXAddress, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kIPXAddress, data.instances().front(),
              {{"NetworkAddress", "0000abcd"},
               {"NodeAddress", "00a0c9112233"},
               {"DeviceName", "eth0"},
               {"FrameType", "802.3"}});
}

TEST(IPXAddress, DoesNotApplyToANewerKernel) {
    const ScratchDir tree;
    tree.write("proc/net/dev", "");
    const GroupData data = gatheredBelow(kIPXAddress, tree.path());
    EXPECT_EQ(GroupState::NotApplicable, data.state());
    EXPECT_EQ("no-ipx", data.reason());
}

}  // namespace
}  // namespace toolkit::quorvah
