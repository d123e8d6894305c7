#include "cli/scan/Location.h"

#include <gtest/gtest.h>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

class LocationTest : public testing::Test {
  protected:
    Location read(const std::string& content) const {
        return readLocation(scratch_.write("zav.ini", content).string(), "zav");
    }
    std::string toolkit(const std::string& content) const { return read(content).toolkit; }

    zavtest::ScratchDir scratch_;
};

TEST_F(LocationTest, MissingFileIsNotReadable) {
    const Location location = readLocation((scratch_.path() / "none").string(), "zav");
    EXPECT_FALSE(location.readable);
    EXPECT_FALSE(location.registered);
    EXPECT_EQ("", location.toolkit);
}

TEST_F(LocationTest, HomeDirectoryIsWhatStandsBehindTheKeyAndOneBlank) {
    EXPECT_EQ("/opt/zav/bin", toolkit("ZAV_HomeDirectory = /opt/zav\n"));
    EXPECT_EQ("/opt/zav/bin", toolkit("ZAV_HomeDirectory =/opt/zav"));
    EXPECT_EQ(" /opt/zav/bin", toolkit("ZAV_HomeDirectory =  /opt/zav\n"));
    EXPECT_EQ("/opt/zav\r/bin", toolkit("ZAV_HomeDirectory = /opt/zav\r\n"));
    EXPECT_EQ("/opt/zav \t/bin", toolkit("ZAV_HomeDirectory = /opt/zav \t\n"));
    EXPECT_EQ("/bin", toolkit("ZAV_HomeDirectory =\n"));
}

TEST_F(LocationTest, KeyIsTakenToTheLetter) {
    for (const char* line :
         {"ZAV_HomeDirectory=/opt", "ZAV_HomeDirectory  = /opt", " ZAV_HomeDirectory = /opt",
          "zav_homedirectory = /opt", "#ZAV_HomeDirectory = /opt", "[zav]", ""})
        EXPECT_EQ("", toolkit(line)) << line;
}

TEST_F(LocationTest, GivenTwoHomeDirectoryLinesTheLastWins) {
    EXPECT_EQ("/b/bin", toolkit("ZAV_HomeDirectory = /a\nx\nZAV_HomeDirectory = /b\n"));
    EXPECT_EQ("/bin", toolkit("ZAV_HomeDirectory = /a\nZAV_HomeDirectory =\n"));
}

TEST_F(LocationTest, RunsOfSlashesBecomeOne) {
    EXPECT_EQ("/opt/zav/bin", toolkit("ZAV_HomeDirectory = //opt////zav/\n"));
}

TEST_F(LocationTest, BytesOutsideAsciiStayAsTheyAre) {
    EXPECT_EQ("/opt/gr\xc3\xb6\xc3\x9f\xff/bin",
              toolkit("ZAV_HomeDirectory = /opt/gr\xc3\xb6\xc3\x9f\xff\n"));
}

TEST_F(LocationTest, LongLineIsReadInPiecesOf1023Bytes) {
    const std::string filling(1023, 'x');
    EXPECT_EQ("/opt/bin", toolkit(filling + "ZAV_HomeDirectory = /opt\n"));
    EXPECT_EQ("", toolkit(filling + "xZAV_HomeDirectory = /opt\n"));
    const std::string key = "ZAV_HomeDirectory = ";
    const std::string longName = "/" + std::string(2000, 'a');
    EXPECT_EQ(longName.substr(0, 1023 - key.size()) + "/bin", toolkit(key + longName + "\n"));
}

TEST_F(LocationTest, LineEndsForTheReaderAtAZeroByte) {
    EXPECT_EQ("/opt/bin", toolkit(std::string("ZAV_HomeDirectory = /opt\0/zav\n", 30)));
}

TEST_F(LocationTest, ProductIsRegisteredByItsExactName) {
    for (const char* line : {"ZAV_Exploiters = zav", "ZAV_Exploiters =zav\n", "ZAV_Exploiters = a:zav:b\n",
                             "ZAV_Exploiters = ::zav::\n", "ZAV_Exploiters = zav\nZAV_Exploiters = b\n"})
        EXPECT_TRUE(read(line).registered) << line;
    for (const char* line : {"ZAV_Exploiters = Zav", "ZAV_Exploiters = zav \n", "ZAV_Exploiters = a: zav\n",
                             "ZAV_Exploiters = zav\r\n", "ZAV_Exploiters = zavx", "ZAV_Exploiters =", "zav"})
        EXPECT_FALSE(read(line).registered) << line;
}

TEST(TemporaryPath, IsTempElseTmpElseTheUsual) {
    const struct {
        std::optional<std::string> temp;
        std::optional<std::string> tmp;
        const char* path;
    } cases[] = {{"/a", "/b", "/a"},
                 {std::nullopt, "/b//c", "/b/c"},
                 {std::nullopt, std::nullopt, "/tmp"},
                 {"", "/b", ""},
                 {"/gr\xc3\xb6\xc3\x9f///", std::nullopt, "/gr\xc3\xb6\xc3\x9f/"}};
    for (const auto& [temp, tmp, path] : cases) {
        const zavtest::EnvironmentVariable first("TEMP", temp);
        const zavtest::EnvironmentVariable second("TMP", tmp);
        EXPECT_EQ(path, temporaryPath());
    }
}

}  // namespace
}  // namespace zavcli
