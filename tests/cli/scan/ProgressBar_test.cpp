#include "cli/scan/ProgressBar.h"

#include <gtest/gtest.h>

#include "cli/terminal/PrintableText.h"

namespace zavcli {
namespace {

TEST(ProgressBar, ScannerLineReportsTheFinishedGroup) {
    EXPECT_EQ("Processor",
              finishedGroup({2, 3, "ZAV_hw_run", "STDOUT data: [group Processor: 8 instances, 3 ms]"}));
    EXPECT_EQ("Memory", finishedGroup({2, 3, "ZAV_hw_run", "STDOUT data: [group Memory: 1 instance, 0 ms]"}));
    EXPECT_EQ("Video", finishedGroup({2, 3, "ZAV_hw_run",
                                      "STDOUT data: [group Video: 0 instances, 0 ms, unsupported]"}));
}

TEST(ProgressBar, OtherMessagesReportNoGroup) {
    const LogMessage others[] = {
        {2, 3, "ZAV_hw_get_value", "STDOUT data: [group Processor: 8 instances, 3 ms]"},
        {2, 3, "ZAV_hw_run", "STDOUT data: [Processor: 8 instances, 3 ms]"},
        {2, 3, "ZAV_hw_run", "STDOUT data: [group : 8 instances, 3 ms]"},
        {2, 3, "ZAV_hw_run", "STDOUT data: [group Processor]"},
        {2, 3, "ZAV_hw_run", "STDOUT data: [group Processor: 8 things, 3 ms]"},
        {2, 3, "ZAV_hw_run", "STDOUT data: [group Processor: 8 instances, 3 m"},
        {2, 3, "ZAV_hw_run", "Executing ZAV [group Processor: 8 instances, 3 ms]"},
        {2, 3, "ZAV_hw_run", ""},
    };
    for (const LogMessage& message : others) EXPECT_FALSE(finishedGroup(message)) << message.text;
}

TEST(ProgressBar, ScannerLineReportsEvaluatedSignatures) {
    const auto evaluated =
        evaluatedSignatures({2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 12 of 345 signatures]"});
    ASSERT_TRUE(evaluated);
    EXPECT_EQ(12, evaluated->done);
    EXPECT_EQ(345, evaluated->total);
    const LogMessage others[] = {
        {2, 4, "ZAV_hw_run", "STDOUT data: [progress: 12 of 345 signatures]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 12 of 345 things]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 12 of signatures]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 12]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: ]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: -1 of 4 signatures]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 5 of 4 signatures]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 1 of 99999999999 signatures]"},
        {2, 4, "SW_ExecuteScanner()", "progress: 12 of 345 signatures"},
    };
    for (const LogMessage& message : others) EXPECT_FALSE(evaluatedSignatures(message)) << message.text;
}

TEST(ProgressBar, BarShowsProportionCountAndGroup) {
    EXPECT_EQ("[                ] 0/4 ", progressBar(0, 4, "", 23));
    EXPECT_EQ("[########        ] 2/4 CPU", progressBar(2, 4, "CPU", 26));
    EXPECT_EQ("[################] 4/4 CPU", progressBar(4, 4, "CPU", 26));
}

TEST(ProgressBar, BarNeverExceedsItsColumns) {
    for (int columns = 1; columns < 200; ++columns) {
        for (const char* group : {"", "CPU", "OperatingSystemCSIDLAndMuchMore", "\x1b[2J"}) {
            const std::string bar = progressBar(17, 48, group, columns);
            EXPECT_LE(columnsOf(bar), columns) << bar;
            EXPECT_EQ(std::string::npos, bar.find('\x1b')) << columns;
        }
    }
}

TEST(ProgressBar, BarOfNoGroupsIsEmpty) {
    EXPECT_EQ("[         ] 0/0 ", progressBar(0, 0, "", 16));
}

}  // namespace
}  // namespace zavcli
