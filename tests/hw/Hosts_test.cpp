// Hosts in which the exit status of a scanner is hard to obtain.
#include "tests/hw/Inventory.h"
#include "tests/support/SignalHandling.h"

namespace hwtest {
namespace {

class HostTest : public testing::TestWithParam<zavtest::ChildHandling> {
  private:
    zavtest::NothingLeft nothingLeft_;
    zavtest::Disposition disposition_{SIGCHLD, GetParam().handler, GetParam().flags};
};

TEST_P(HostTest, GetsTheExitStatus) {
    Inventory inventory;
    inventory.put("status", "7");
    inventory.put("signal", "15");
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    for (int round = 0; round < 5; ++round) {
        inventory.scannerIs("CopyOutput");
        ASSERT_EQ(inventory.run(), 0);
        EXPECT_EQ(inventory.instances(3), 1);
        inventory.scannerIs("FailAfterOutput");
        EXPECT_EQ(inventory.run(), 103);
        EXPECT_EQ(inventory.returnCode(), 7);
        inventory.scannerIs("EndBySignal");
        EXPECT_EQ(inventory.run(), 103);
        EXPECT_EQ(inventory.returnCode(), 128 + 15);
        std::filesystem::remove(inventory.scanner());
        EXPECT_EQ(inventory.run(), 103);
        EXPECT_EQ(inventory.returnCode(), -1);
    }
}

TEST_P(HostTest, IsNotDisturbedByManySignals) {
    Inventory inventory;
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    const zavtest::SignalStorm storm;
    const int before = zavtest::SignalStorm::count();
    do {
        ASSERT_EQ(inventory.run(), 0);
        EXPECT_EQ(inventory.instances(3), 1);
    } while (zavtest::SignalStorm::count() < before + 50);
}

INSTANTIATE_TEST_SUITE_P(Sigchld, HostTest,
                         testing::Values(zavtest::ChildHandling{"ByDefault", SIG_DFL, 0},
                                         zavtest::ChildHandling{"Ignored", SIG_IGN, 0},
                                         zavtest::ChildHandling{"WithoutZombies", SIG_DFL, SA_NOCLDWAIT},
                                         zavtest::ChildHandling{"HandledByReaping", zavtest::reapEveryChild,
                                                                SA_RESTART}),
                         [](const auto& kind) { return kind.param.name; });

TEST(Host, GetsTheExitStatusBesideAThreadThatReapsEveryChild) {
    const zavtest::NothingLeft nothingLeft;
    Inventory inventory;
    inventory.put("status", "7");
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    for (const int options : {0, WNOHANG}) {
        const zavtest::ReapingThread reaper(options);
        for (int round = 0; round < 125; ++round) {
            inventory.scannerIs("CopyOutput");
            EXPECT_EQ(inventory.run(), 0);
            EXPECT_EQ(inventory.returnCode(), 0);
            inventory.scannerIs("FailAfterOutput");
            EXPECT_EQ(inventory.run(), 103);
            EXPECT_EQ(inventory.returnCode(), 7);
        }
        EXPECT_EQ(reaper.count(), 0);
    }
}

}  // namespace
}  // namespace hwtest
