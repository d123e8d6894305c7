#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/toolkit/quorvis/LeafTester.h"

namespace toolkit::quorvis {
namespace {

namespace fs = std::filesystem;
constexpr const char* kSumOfAbc = "BA7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

class FileLeaf : public ::testing::Test {
  protected:
    void link(const std::string& target, const std::string& path) {
        fs::create_directories((tester_.tree.path() / path).parent_path());
        fs::create_symlink(target, tester_.tree.path() / path);
    }
    LeafResult file(const std::string& path, LeafTester::Attributes tests = {}) {
        tests.emplace_back(Attribute::Path, path);
        return tester_.ask(LeafKind::File, std::move(tests));
    }
    std::vector<std::string> glob(const std::string& pattern, LeafTester::Attributes tests = {}) {
        tests.emplace_back(Attribute::Pattern, pattern);
        const LeafResult result = tester_.ask(LeafKind::Glob, std::move(tests));
        EXPECT_FALSE(result.incomplete);
        std::vector<std::string> paths;
        for (const Item& item : result.items) paths.push_back(*item.find("path"));
        return paths;
    }
    bool passes(const std::string& path, LeafTester::Attributes tests) {
        const LeafResult result = file(path, std::move(tests));
        EXPECT_FALSE(result.incomplete) << path;
        return result.items.size() == 1;
    }

    LeafTester tester_;
};

using Paths = std::vector<std::string>;

TEST_F(FileLeaf, AnItemHasTheValuesOfTheFile) {
    const fs::path path = tester_.tree.write("opt/app/tool", "abc");
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));
    const LeafResult result = file("/opt/app/tool");
    ASSERT_EQ(1U, result.items.size());
    const Item& item = result.items[0];
    EXPECT_EQ("/opt/app/tool", item.source);
    EXPECT_EQ("/opt/app/tool", *item.find("path"));
    EXPECT_EQ("tool", *item.find("name"));
    EXPECT_EQ("/opt/app", *item.find("dir"));
    EXPECT_EQ("3", *item.find("size"));
    EXPECT_EQ("2001-09-09T01:46:40Z", *item.find("mtime"));
    EXPECT_EQ(nullptr, item.find("sha256")) << "only those who test it pay for it";
    EXPECT_EQ(nullptr, item.find("target"));
    EXPECT_EQ("/", LeafTester::first(file("/opt"), "dir"));
}

TEST_F(FileLeaf, EveryTestMustPass) {
    const fs::path path = tester_.tree.write("f", "abc");
    tester_.tree.write("etc/passwd", "root:x:0:0::/root:/bin/sh\nkeeper:x:4711:1::/:/bin/sh\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0646));
    const bool owned = chown(path.c_str(), 4711, static_cast<gid_t>(-1)) == 0;
    fs::create_directory(tester_.tree.path() / "dir");
    link("f", "l");
    struct Case {
        const char* path;
        Attribute attribute;
        const char* value;
        bool passes;
    };
    const Case cases[] = {
        {"/f", Attribute::Kind, "file", true},    {"/f", Attribute::Kind, "dir", false},
        {"/f", Attribute::Kind, "any", true},     {"/f", Attribute::Kind, "link", false},
        {"/l", Attribute::Kind, "file", true},    {"/l", Attribute::Kind, "link", true},
        {"/dir", Attribute::Kind, "dir", true},   {"/dir", Attribute::Kind, "file", false},
        {"/f", Attribute::Size, "3", true},       {"/f", Attribute::Size, "4", false},
        {"/f", Attribute::MinSize, "3", true},    {"/f", Attribute::MinSize, "4", false},
        {"/f", Attribute::MaxSize, "3", true},    {"/f", Attribute::MaxSize, "2", false},
        {"/f", Attribute::Mode, "0646", true},    {"/f", Attribute::Mode, "646", true},
        {"/f", Attribute::Mode, "644", false},    {"/f", Attribute::Sha256, kSumOfAbc, true},
        {"/f", Attribute::Sha256, "00", false},   {"/l", Attribute::Sha256, kSumOfAbc, true},
        {"/dir", Attribute::Sha256, "00", false}, {"/f", Attribute::Owner, "nobodyHere", false},
        {"/none", Attribute::Kind, "any", false}, {"/f/none", Attribute::Kind, "any", false},
    };
    for (const Case& one : cases)
        EXPECT_EQ(one.passes, passes(one.path, {{one.attribute, one.value}})) << one.path << " " << one.value;
    EXPECT_EQ(owned, passes("/f", {{Attribute::Owner, "keeper"}}));
    EXPECT_EQ(owned, passes("/f", {{Attribute::Owner, "4711"}}));
    EXPECT_FALSE(passes("/f", {{Attribute::Kind, "file"}, {Attribute::Size, "3"}, {Attribute::Mode, "600"}}));
}

TEST_F(FileLeaf, AnItemHasTheHashAndTheLinkTarget) {
    tester_.tree.write("f", "abc");
    link("f", "l");
    const LeafResult result = file("/l", {{Attribute::Sha256, kSumOfAbc}});
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
              LeafTester::first(result, "sha256"));
    EXPECT_EQ("f", LeafTester::first(result, "target"));
    EXPECT_EQ("/l", LeafTester::first(result, "path"));
    EXPECT_EQ("1", LeafTester::first(file("/l", {{Attribute::Kind, "link"}}), "size"));
}

TEST_F(FileLeaf, InvalidValuesLeaveTheLeafUnknown) {
    tester_.tree.write("f", "abc");
    for (const auto& [attribute, value] : LeafTester::Attributes{{Attribute::Size, "3x"},
                                                                 {Attribute::MinSize, ""},
                                                                 {Attribute::MaxSize, "-1"},
                                                                 {Attribute::Mode, "0698"},
                                                                 {Attribute::Kind, "pipe"}}) {
        const LeafResult result = file("/f", {{attribute, value}});
        EXPECT_TRUE(result.items.empty()) << value;
        EXPECT_TRUE(result.incomplete) << value;
        EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(result)) << value;
    }
    for (const char* path : {"", "f", "./f"}) EXPECT_TRUE(file(path).incomplete) << path;
    EXPECT_TRUE(file(std::string("/f\0", 3)).incomplete);
    EXPECT_EQ(1U, file("/../../f").items.size()) << "above the root stands the root";
    for (const char* depth : {"0", "x", "-1"}) {
        const LeafResult result =
            tester_.ask(LeafKind::Glob, {{Attribute::Pattern, "/*"}, {Attribute::MaxDepth, depth}});
        EXPECT_TRUE(result.incomplete && result.items.empty()) << depth;
    }
}

TEST_F(FileLeaf, AFileThatCannotBeHashedIsUnknown) {
    tester_.tree.write("etc/shadow", "abc");
    const LeafResult secret = file("/etc/shadow", {{Attribute::Sha256, kSumOfAbc}});
    EXPECT_TRUE(secret.incomplete);
    EXPECT_EQ(std::vector{EventCode::Denied}, LeafTester::codes(secret));
    EXPECT_EQ(1U, file("/etc/shadow", {{Attribute::Size, "3"}}).items.size());
    const LeafResult other = file("/etc/shadow", {{Attribute::Sha256, kSumOfAbc}, {Attribute::Size, "4"}});
    EXPECT_FALSE(other.incomplete) << "the size has told already";
}

TEST_F(FileLeaf, AGlobFindsThePathsThatPass) {
    tester_.tree.write("opt/b/tool", "abc");
    tester_.tree.write("opt/a/tool", "abcd");
    tester_.tree.write("opt/c/x/tool", "abc");
    fs::create_directories(tester_.tree.path() / "opt/d/tool");
    EXPECT_EQ((Paths{"/opt/a/tool", "/opt/b/tool"}), glob("/opt/*/tool", {{Attribute::Kind, "file"}}));
    EXPECT_EQ((Paths{"/opt/b/tool", "/opt/c/x/tool"}), glob("/opt/**/tool", {{Attribute::Size, "3"}}));
    EXPECT_EQ((Paths{"/opt/b/tool"}),
              glob("/opt/**/tool", {{Attribute::Size, "3"}, {Attribute::MaxDepth, "2"}}));
    EXPECT_EQ((Paths{"/opt/d/tool"}),
              glob("/opt/**/tool", {{Attribute::Kind, "dir"}, {Attribute::Exclude, "/opt/c"}}));
    EXPECT_EQ((Paths{"/opt/b/tool"}), glob("/opt/{b,a}/tool", {{Attribute::Sha256, kSumOfAbc}}));
}

TEST_F(FileLeaf, OneFileCountsOnceUnderThePathWithoutLinks) {
    tester_.tree.write("opt/real/tool", "abc");
    link("real", "opt/alias");
    link("/opt/real/tool", "srv/tool");
    link("/opt/real/tool", "srv/again");
    EXPECT_EQ((Paths{"/opt/real/tool"}), glob("/opt/*/tool"));
    EXPECT_EQ((Paths{"/srv/again"}), glob("/srv/*")) << "no path without links among them: the first one";
    EXPECT_EQ((Paths{"/opt/real/tool"}), glob("/{srv,opt/*}/*"));
    EXPECT_EQ((Paths{"/srv/again", "/srv/tool"}), glob("/srv/*", {{Attribute::Kind, "link"}}));
    fs::create_hard_link(tester_.tree.path() / "opt/real/tool", tester_.tree.path() / "opt/real/another");
    EXPECT_EQ((Paths{"/opt/real/another"}), glob("/opt/real/*"));
}

TEST_F(FileLeaf, BrokenLinksAreNotFiles) {
    link("/nowhere", "opt/a");
    EXPECT_EQ((Paths{}), glob("/opt/*"));
    EXPECT_EQ((Paths{"/opt/a"}), glob("/opt/*", {{Attribute::Kind, "link"}}));
    EXPECT_EQ("/nowhere", LeafTester::first(file("/opt/a", {{Attribute::Kind, "link"}}), "target"));
}

TEST_F(FileLeaf, AnIncompleteWalkLeavesTheLeafIncomplete) {
    tester_.tree.write("opt/1/f", "");
    tester_.tree.write("opt/1/2/f", "");
    tester_.settings.fileSystem.maxDepth = 2;
    const LeafResult result = tester_.ask(LeafKind::Glob, {{Attribute::Pattern, "/opt/**/f"}});
    EXPECT_EQ(1U, result.items.size());
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::LimitDepth}, LeafTester::codes(result));
}

}  // namespace
}  // namespace toolkit::quorvis
