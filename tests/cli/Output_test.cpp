#include "cli/Output.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/Failure.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

class OutputFileTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    std::size_t fileCount() const {
        std::filesystem::directory_iterator files(scratch_.path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    static std::string refusal(const std::string& file) {
        try {
            OutputFile output(file);
            output.commit("text");
        } catch (const Failure& failure) {
            EXPECT_EQ(kExitFailed, failure.status());
            return failure.what();
        }
        return "not refused";
    }

    zavtest::ScratchDir scratch_;
};

TEST_F(OutputFileTest, CommittedTextIsTheWholeFile) {
    OutputFile file(path("out"));
    file.commit("new text\n");
    EXPECT_EQ("new text\n", zavtest::readAll(path("out")));
    EXPECT_EQ(1U, fileCount());
}

TEST_F(OutputFileTest, NothingStandsInItsPlaceBeforeTheCommit) {
    scratch_.write("out", "old");
    const OutputFile file(path("out"));
    EXPECT_EQ("old", zavtest::readAll(path("out")));
}

TEST_F(OutputFileTest, NothingIsLeftWithoutACommit) {
    { const OutputFile file(path("out")); }
    EXPECT_EQ(0U, fileCount());
}

TEST_F(OutputFileTest, ReplacedFileKeepsItsPermissions) {
    scratch_.write("out", "old");
    std::filesystem::permissions(path("out"), std::filesystem::perms(0640));
    OutputFile file(path("out"));
    file.commit("new");
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(path("out")).permissions());
    EXPECT_EQ("new", zavtest::readAll(path("out")));
}

TEST_F(OutputFileTest, NewFileHasThePermissionsOfTheUmask) {
    const mode_t before = umask(027);
    OutputFile file(path("out"));
    file.commit("new");
    umask(before);
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(path("out")).permissions());
}

TEST_F(OutputFileTest, SymbolicLinkIsFollowed) {
    scratch_.write("real", "old");
    std::filesystem::create_symlink("real", path("link"));
    OutputFile file(path("link"));
    file.commit("new");
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    EXPECT_EQ("new", zavtest::readAll(path("real")));
}

TEST_F(OutputFileTest, DeviceIsWrittenToAndStays) {
    OutputFile file("/dev/null");
    file.commit("text");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, MissingDirectoryIsNamed) {
    const std::string file = path("none/out");
    EXPECT_EQ("cannot write '" + file + "': No such file or directory", refusal(file));
}

TEST_F(OutputFileTest, DirectoryIsRefused) {
    const std::string file = scratch_.path().string();
    EXPECT_EQ("cannot write '" + file + "': Is a directory", refusal(file));
}

TEST_F(OutputFileTest, FullDeviceIsReported) {
    EXPECT_EQ("cannot write '/dev/full': No space left on device", refusal("/dev/full"));
}

}  // namespace
}  // namespace zavcli
