#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/CpuTimes.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

constexpr char kStat[] =
    "cpu  100 20 40 800 30 3 7 5 6 1\n"
    "cpu0 60 10 20 400 15 2 4 3 6 1\n"
    "cpu2 40 10 20 400 15 1 3 2 0 0\n"
    "intr 5\nctxt 6\nbtime 1700000000\nprocs_running 2\nprocs_blocked 0\n";

TEST(CpuMeter, ReportsTheMeanSinceTheStartOfACapturedSystem) {
    const ScratchDir tree;
    tree.write("proc/stat", kStat);
    tree.write("proc/uptime", "100.50 180.00\n");
    tree.write("proc/loadavg", "0.52 0.58 0.59 2/311 12345\n");
    const GroupData data = gatheredBelow(kCpuMeter, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kCpuMeter, data.instances().front(),
              {{"DeviceID", "total"},
               {"LoadPercentage", "17"},
               {"SampleTime", "2023-11-14T22:15:00Z"},
               {"UserModeTime", "1200"},
               {"KernelModeTime", "500"},
               {"IdleTime", "8300"},
               {"OnlineProcessors", "2"},
               {"RunQueue", "2"},
               {"LoadAverage1", "0.52"}});
}

TEST(CpuMeter, InvalidNumbersAreUnknown) {
    const ScratchDir tree;
    tree.write("proc/stat", "cpu  -1 18446744073709551615 9223372036854775807 x\ncpu0\n");
    const GroupData data = gatheredBelow(kCpuMeter, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kCpuMeter, data.instances().front(), {{"DeviceID", "total"}, {"OnlineProcessors", "1"}});
}

TEST(CpuMeterLive, MeasuresForTheStatedTime) {
    const GroupData data = gatheredLive(kCpuMeter);
    ASSERT_EQ(1U, data.instances().size());
    const Instance& meter = data.instances().front();
    EXPECT_EQ("200", meter.get("SampleInterval"));
    ASSERT_NE("", meter.get("LoadPercentage"));
    EXPECT_LE(std::stoi(meter.get("LoadPercentage")), 100);
}

TEST(CpuTimes, TheLoadIsTheShareOfTimeThatWasNotIdle) {
    const auto times = [](std::uint64_t user, std::uint64_t idle) {
        CpuTimes cpu;
        cpu.user = user;
        cpu.idle = idle;
        return cpu;
    };
    EXPECT_EQ(Count(25), loadBetween(times(100, 100), times(150, 250)));
    EXPECT_EQ(Count(0), loadBetween(times(100, 100), times(100, 200)));
    EXPECT_EQ(Count(100), loadBetween(times(100, 100), times(200, 99))) << "an idle time may be counted back";
    EXPECT_EQ(std::nullopt, loadBetween(times(100, 100), times(100, 100)));
    EXPECT_EQ(std::nullopt, loadBetween(times(100, 100), times(50, 50)));
}

TEST(UnixCpuMeter, ReportsEachProcessor) {
    const ScratchDir tree;
    tree.write("proc/stat", kStat);
    const GroupData data = gatheredBelow(kUnixCpuMeter, tree.path());
    ASSERT_EQ((std::vector<std::string>{"cpu0", "cpu2"}), keysOf(data));
    expectAll(kUnixCpuMeter, data.instances().front(),
              {{"DeviceID", "cpu0"},
               {"UserModeTime", "600"},
               {"KernelModeTime", "200"},
               {"NiceTime", "100"},
               {"IdleTime", "4000"},
               {"IoWaitTime", "150"},
               {"IrqTime", "20"},
               {"SoftIrqTime", "40"},
               {"StealTime", "30"},
               {"GuestTime", "60"}});
}

TEST(UnixCpuMeter, AnOldKernelCountsFewerKindsOfTime) {
    const ScratchDir tree;
    tree.write("proc/stat", "cpu  1 2 3 4\ncpu0 1 2 3 4\n");
    expectAll(kUnixCpuMeter, gatheredBelow(kUnixCpuMeter, tree.path()).instances().front(),
              {{"DeviceID", "cpu0"},
               {"UserModeTime", "10"},
               {"KernelModeTime", "30"},
               {"NiceTime", "20"},
               {"IdleTime", "40"}});
}

}  // namespace
}  // namespace toolkit::quorvah
