#include "cli/scan/Configuration.h"

#include <gtest/gtest.h>

#include <sstream>

namespace zavcli {
namespace {

using Faults = std::vector<std::string>;

Faults faultsOf(const std::string& text) {
    std::istringstream lines(text);
    return configurationFaults(lines);
}

TEST(Configuration, WellFormedFilesHaveNoFaults) {
    for (const char* text : {
             "ZAV_HomeDirectory = /opt/zav\n",
             "ZAV_HomeDirectory =/opt/zav",
             "[zav]\n# comment = 1\nother=2\n\nZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = a:zav\n",
         })
        EXPECT_EQ(Faults{}, faultsOf(text)) << text;
}

TEST(Configuration, KeysThatTheLibraryDoesNotSeeAreNamedWithTheirLine) {
    for (const char* line :
         {"ZAV_HomeDirectory=/opt/zav", "ZAV_HomeDirectory  = /opt/zav", " ZAV_HomeDirectory = /opt/zav",
          "zav_homedirectory = /opt/zav", "ZAV_HomeDirectory\t= /opt/zav"})
        EXPECT_EQ(Faults{"line 2 must begin with exactly 'ZAV_HomeDirectory ='"},
                  faultsOf(std::string("\n") + line))
            << line;
}

TEST(Configuration, ValuesThatHoldMoreThanTheyShowAreNamed) {
    const struct {
        const char* text;
        const char* fault;
    } cases[] = {
        {"ZAV_HomeDirectory = /opt/zav\r\n",
         "line 1 ends in a carriage return, which becomes part of the value"},
        {"ZAV_HomeDirectory = /opt/zav \n", "line 1 ends in blanks, which become part of the value"},
        {"ZAV_HomeDirectory =  /opt/zav\n", "line 1 must have at most one blank behind '='"},
        {"ZAV_HomeDirectory =\n", "line 1 has no value"},
        {"ZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = zav\t\n",
         "line 2 ends in blanks, which become part of the value"},
    };
    for (const auto& [text, fault] : cases) EXPECT_EQ(Faults{fault}, faultsOf(text)) << text;
}

TEST(Configuration, MissingHomeDirectoryIsAFault) {
    for (const char* text : {"", "\n\n", "ZAV_Exploiters = zav\n", "# ZAV_HomeDirectory = /opt/zav\n",
                             "ZAV_HomeDirectory\n/opt\n"}) {
        const Faults faults = faultsOf(text);
        ASSERT_FALSE(faults.empty()) << text;
    }
    EXPECT_EQ(Faults{"it has no line 'ZAV_HomeDirectory = DIRECTORY'"}, faultsOf("ZAV_Exploiters = zav\n"));
}

}  // namespace
}  // namespace zavcli
