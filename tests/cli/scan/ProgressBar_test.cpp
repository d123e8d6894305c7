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

TEST(ProgressBar, ScannerLineReportsThePercentage) {
    EXPECT_EQ(34, evaluatedPercent({2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 34 percent]"}));
    EXPECT_EQ(100, evaluatedPercent({2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 100 percent]"}));
    const LogMessage others[] = {
        {2, 4, "ZAV_hw_run", "STDOUT data: [progress: 34 percent]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 34 things]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: percent]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress:  percent]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 34]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 34 of 100 percent]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: -1 percent]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 101 percent]"},
        {2, 4, "SW_ExecuteScanner()", "STDOUT data: [progress: 99999999999 percent]"},
        {2, 4, "SW_ExecuteScanner()", "progress: 34 percent"},
    };
    for (const LogMessage& message : others) EXPECT_FALSE(evaluatedPercent(message)) << message.text;
}

TEST(ProgressBar, BarShowsProportionCountAndGroup) {
    EXPECT_EQ("[                ] 0/4 ", progressBar(0, 4, "", 23));
    EXPECT_EQ("[########        ] 2/4 CPU", progressBar(2, 4, "CPU", 26));
    EXPECT_EQ("[################] 4/4 CPU", progressBar(4, 4, "CPU", 26));
}

TEST(ProgressBar, BarShowsThePercentage) {
    EXPECT_EQ("[          ] 0 %", percentBar(0, 16));
    EXPECT_EQ("[####      ] 40 %", percentBar(40, 17));
    EXPECT_EQ("[##########] 100 %", percentBar(100, 18));
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
