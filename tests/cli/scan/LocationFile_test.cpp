#include "cli/scan/LocationFile.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

class LocationFileTest : public testing::Test {
  protected:
    LocationFile read(const std::string& content) const {
        return readLocationFile(scratch_.write("zav.ini", content).string(), "zav");
    }
    std::string toolkit(const std::string& content) const { return read(content).toolkit; }

    zavtest::ScratchDir scratch_;
};

TEST_F(LocationFileTest, MissingFileIsNotReadable) {
    const LocationFile file = readLocationFile((scratch_.path() / "none").string(), "zav");
    EXPECT_FALSE(file.readable);
    EXPECT_FALSE(file.registered);
    EXPECT_EQ("", file.toolkit);
}

TEST_F(LocationFileTest, HomeDirectoryFollowsTheKeyAndOneBlank) {
    EXPECT_EQ("/opt/zav/bin", toolkit("ZAV_HomeDirectory = /opt/zav\n"));
    EXPECT_EQ("/opt/zav/bin", toolkit("ZAV_HomeDirectory =/opt/zav"));
    EXPECT_EQ(" /opt/zav/bin", toolkit("ZAV_HomeDirectory =  /opt/zav\n"));
    EXPECT_EQ("/opt/zav\r/bin", toolkit("ZAV_HomeDirectory = /opt/zav\r\n"));
    EXPECT_EQ("/opt/zav \t/bin", toolkit("ZAV_HomeDirectory = /opt/zav \t\n"));
    EXPECT_EQ("/bin", toolkit("ZAV_HomeDirectory =\n"));
}

TEST_F(LocationFileTest, KeyMustMatchExactly) {
    for (const char* line :
         {"ZAV_HomeDirectory=/opt", "ZAV_HomeDirectory  = /opt", " ZAV_HomeDirectory = /opt",
          "zav_homedirectory = /opt", "#ZAV_HomeDirectory = /opt", "[zav]", ""})
        EXPECT_EQ("", toolkit(line)) << line;
}

TEST_F(LocationFileTest, LastHomeDirectoryLineWins) {
    EXPECT_EQ("/b/bin", toolkit("ZAV_HomeDirectory = /a\nx\nZAV_HomeDirectory = /b\n"));
    EXPECT_EQ("/bin", toolkit("ZAV_HomeDirectory = /a\nZAV_HomeDirectory =\n"));
}

TEST_F(LocationFileTest, RunsOfSlashesBecomeOneSlash) {
    EXPECT_EQ("/opt/zav/bin", toolkit("ZAV_HomeDirectory = //opt////zav/\n"));
}

TEST_F(LocationFileTest, BytesOutsideAsciiAreKept) {
    EXPECT_EQ("/opt/gr\xc3\xb6\xc3\x9f\xff/bin",
              toolkit("ZAV_HomeDirectory = /opt/gr\xc3\xb6\xc3\x9f\xff\n"));
}

TEST_F(LocationFileTest, LongLineIsReadInPiecesOf1023Bytes) {
    const std::string filling(1023, 'x');
    EXPECT_EQ("/opt/bin", toolkit(filling + "ZAV_HomeDirectory = /opt\n"));
    EXPECT_EQ("", toolkit(filling + "xZAV_HomeDirectory = /opt\n"));
    const std::string key = "ZAV_HomeDirectory = ";
    const std::string longName = "/" + std::string(2000, 'a');
    EXPECT_EQ(longName.substr(0, 1023 - key.size()) + "/bin", toolkit(key + longName + "\n"));
}

TEST_F(LocationFileTest, ZeroByteEndsALine) {
    EXPECT_EQ("/opt/bin", toolkit(std::string("ZAV_HomeDirectory = /opt\0/zav\n", 30)));
}

TEST_F(LocationFileTest, ProductIsRegisteredByItsExactName) {
    for (const char* line : {"ZAV_Exploiters = zav", "ZAV_Exploiters =zav\n", "ZAV_Exploiters = a:zav:b\n",
                             "ZAV_Exploiters = ::zav::\n", "ZAV_Exploiters = zav\nZAV_Exploiters = b\n"})
        EXPECT_TRUE(read(line).registered) << line;
    for (const char* line : {"ZAV_Exploiters = Zav", "ZAV_Exploiters = zav \n", "ZAV_Exploiters = a: zav\n",
                             "ZAV_Exploiters = zav\r\n", "ZAV_Exploiters = zavx", "ZAV_Exploiters =", "zav"})
        EXPECT_FALSE(read(line).registered) << line;
}

using Faults = std::vector<std::string>;

Faults faultsOf(const std::string& text) {
    std::istringstream lines(text);
    return locationFileFaults(lines);
}

TEST(LocationFileFaults, WellFormedFilesHaveNoFaults) {
    for (const char* text : {
             "ZAV_HomeDirectory = /opt/zav\n",
             "ZAV_HomeDirectory =/opt/zav",
             "[zav]\n# comment = 1\nother=2\n\nZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = a:zav\n",
         })
        EXPECT_EQ(Faults{}, faultsOf(text)) << text;
}

TEST(LocationFileFaults, MisspelledKeysAreReportedWithTheirLine) {
    for (const char* line :
         {"ZAV_HomeDirectory=/opt/zav", "ZAV_HomeDirectory  = /opt/zav", " ZAV_HomeDirectory = /opt/zav",
          "zav_homedirectory = /opt/zav", "ZAV_HomeDirectory\t= /opt/zav"})
        EXPECT_EQ(Faults{"line 2 must begin with exactly 'ZAV_HomeDirectory ='"},
                  faultsOf(std::string("\n") + line))
            << line;
}

TEST(LocationFileFaults, ValuesWithInvisibleCharactersAreReported) {
    const struct {
        const char* text;
        const char* fault;
    } cases[] = {
        {"ZAV_HomeDirectory = /opt/zav\r\n",
         "line 1 ends in a carriage return, which becomes part of the value"},
        {"ZAV_HomeDirectory = /opt/zav \n", "line 1 ends in blanks, which become part of the value"},
        {"ZAV_HomeDirectory =  /opt/zav\n", "line 1 must have at most one blank after '='"},
        {"ZAV_HomeDirectory =\n", "line 1 has no value"},
        {"ZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = zav\t\n",
         "line 2 ends in blanks, which become part of the value"},
    };
    for (const auto& [text, fault] : cases) EXPECT_EQ(Faults{fault}, faultsOf(text)) << text;
}

TEST(LocationFileFaults, MissingHomeDirectoryIsAFault) {
    for (const char* text : {"", "\n\n", "ZAV_Exploiters = zav\n", "# ZAV_HomeDirectory = /opt/zav\n",
                             "ZAV_HomeDirectory\n/opt\n"}) {
        const Faults faults = faultsOf(text);
        ASSERT_FALSE(faults.empty()) << text;
    }
    EXPECT_EQ(Faults{"it has no line 'ZAV_HomeDirectory = DIRECTORY'"}, faultsOf("ZAV_Exploiters = zav\n"));
}

}  // namespace
}  // namespace zavcli
