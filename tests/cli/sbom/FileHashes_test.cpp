#include "cli/sbom/FileHashes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "cli/system/Failure.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

class FileHashesTest : public testing::Test {
  protected:
    std::string reasonOf(const std::string& path) {
        std::string reason;
        EXPECT_FALSE(FileHasher(root()).hash(path, reason)) << path;
        return reason;
    }
    std::string root() const { return (scratch_.path() / "root").string(); }

    zavtest::ScratchDir scratch_;
    std::filesystem::path file_ = scratch_.write("root/opt/x", "abc");
};

TEST_F(FileHashesTest, FileBelowTheRootIsHashed) {
    std::string reason;
    const std::optional<Hashes> hashes = FileHasher(root()).hash("/opt/x", reason);
    ASSERT_TRUE(hashes) << reason;
    EXPECT_EQ("a9993e364706816aba3e25717850c26c9cd0d89d", hashes->sha1);
}

TEST_F(FileHashesTest, LinksStayBelowTheRoot) {
    scratch_.write("outside", "secret");
    std::filesystem::create_symlink("/outside", root() + "/absolute");
    std::filesystem::create_symlink("../../outside", root() + "/opt/relative");
    std::filesystem::create_symlink("/opt/x", root() + "/inside");
    EXPECT_EQ("No such file or directory", reasonOf("/absolute"));
    EXPECT_EQ("No such file or directory", reasonOf("/opt/relative"));
    EXPECT_EQ("No such file or directory", reasonOf("/../outside"));
    std::string reason;
    EXPECT_TRUE(FileHasher(root()).hash("/inside", reason)) << reason;
}

TEST_F(FileHashesTest, OnlyRegularFilesAreRead) {
    ASSERT_EQ(0, mkfifo((root() + "/pipe").c_str(), 0644));
    EXPECT_EQ(kNotRegular, reasonOf("/pipe"));
    EXPECT_EQ(kNotRegular, reasonOf("/opt"));
    EXPECT_NE("", reasonOf("/missing"));
    EXPECT_NE("", reasonOf(""));
}

TEST_F(FileHashesTest, FileThatOthersMayNotReadIsNotHashed) {
    ASSERT_EQ(0, chmod(file_.c_str(), 0640));
    EXPECT_EQ("other users may not read it", reasonOf("/opt/x"));
}

TEST_F(FileHashesTest, LargeFileIsNotRead) {
    ASSERT_EQ(0, truncate(file_.c_str(), (off_t{256} << 20) + 1));
    EXPECT_EQ("too large", reasonOf("/opt/x"));
}

TEST_F(FileHashesTest, MissingRootIsAFailure) {
    EXPECT_THROW(FileHasher("/no/such/place"), Failure);
}

}  // namespace
}  // namespace zavcli
