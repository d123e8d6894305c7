#include "cli/scan/LogPrinter.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

const LogMessage kError{0, 3, "ZAV_hw_run", "Exit code: 3 (ERROR)"};
const LogMessage kNotable{1, 1, "ZAVLocation::ZAVLocation()",
                          "Default location [] is different that specified one [/x]"};
const LogMessage kDetail{2, 1, "ZAV_init", "init OK"};

TEST(LogPrinter, ErrorsAreAlwaysShown) {
    EXPECT_EQ("zav: Exit code: 3 (ERROR)", messageLine(kError, Verbosity::Errors, ToolkitSource::Bundled));
    EXPECT_EQ("zav: Exit code: 3 (ERROR)", messageLine(kError, Verbosity::Notable, ToolkitSource::Bundled));
}

TEST(LogPrinter, OtherLevelsAreShownOnRequest) {
    EXPECT_EQ("", messageLine(kNotable, Verbosity::Errors, ToolkitSource::Given));
    EXPECT_NE("", messageLine(kNotable, Verbosity::Notable, ToolkitSource::Given));
    EXPECT_EQ("", messageLine(kDetail, Verbosity::Notable, ToolkitSource::Given));
    EXPECT_EQ("zav[1.2] ZAV_init: init OK", messageLine(kDetail, Verbosity::Trace, ToolkitSource::Given));
}

TEST(LogPrinter, MissingInstallationIsReportedOnlyIfItIsUsed) {
    const LogMessage normal[] = {
        {0, 1, "ZAVLocation::getSystemLocation", "Can't open file [/etc/zav/zav.ini]"},
        {0, 1, "ZAV_init", "Exploiter not correctly registered"},
        {0, 1, "ZAV_init", "ZAV not installed, please specify a directory"},
    };
    for (const LogMessage& message : normal) {
        EXPECT_EQ("", messageLine(message, Verbosity::Errors, ToolkitSource::Bundled)) << message.text;
        EXPECT_EQ("", messageLine(message, Verbosity::Errors, ToolkitSource::Given)) << message.text;
        EXPECT_NE("", messageLine(message, Verbosity::Errors, ToolkitSource::Configured)) << message.text;
        EXPECT_NE("", messageLine(message, Verbosity::Notable, ToolkitSource::Bundled)) << message.text;
    }
}

TEST(LogPrinter, RedundantMessagesAreShownOnRequest) {
    for (const LogMessage& message :
         {LogMessage{0, 4, "SW_ExecuteScanner()", "Exit code: 3 (ERROR)"},
          LogMessage{0, 4, "ZAV_sw_setopt_config", "Plugin [FileSystem] config set [maxDepth] = [3]"}}) {
        EXPECT_EQ("", messageLine(message, Verbosity::Errors, ToolkitSource::Given));
        EXPECT_NE("", messageLine(message, Verbosity::Notable, ToolkitSource::Given));
    }
}

TEST(LogPrinter, OtherFilesThatCannotBeOpenedAreShown) {
    const LogMessage other{0, 1, "ZAVLocation::getSystemLocation", "Can't open file [/tmp/other]"};
    EXPECT_NE("", messageLine(other, Verbosity::Errors, ToolkitSource::Bundled));
}

TEST(LogPrinter, MessagesCannotMoveTheCursor) {
    const LogMessage message{0, 3, "ZAV_hw_run", "Error: No such group [\x1b[2J\n]"};
    EXPECT_EQ("zav: Error: No such group [\\u001b[2J\\n]",
              messageLine(message, Verbosity::Errors, ToolkitSource::Given));
}

}  // namespace
}  // namespace zavcli
