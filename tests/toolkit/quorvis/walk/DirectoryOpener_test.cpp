#include "toolkit/quorvis/walk/DirectoryOpener.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvis {
namespace {

kest::Descriptor openAt(const std::filesystem::path& path) {
    return kest::Descriptor(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

TEST(DirectoryChain, AChainContinuesAnotherOne) {
    const zavtest::ScratchDir tree;
    std::filesystem::create_directories(tree.path() / "a/b/c");
    const kest::Descriptor top = openAt(tree.path());
    const kest::Descriptor a = openAt(tree.path() / "a");
    const kest::Descriptor b = openAt(tree.path() / "a/b");
    const kest::Descriptor c = openAt(tree.path() / "a/b/c");
    DirectoryChain first;
    first.push(openAt(tree.path()), false);
    first.push(openAt(tree.path() / "a"), false);
    first.push(openAt(tree.path() / "a/b"), false);
    EXPECT_TRUE(first.holds(top.number()) && first.holds(a.number()) && first.holds(b.number()));
    EXPECT_FALSE(first.holds(c.number()));

    DirectoryChain second;
    second.push(openAt(tree.path() / "a/b/c"), false);
    second.start(first.above(1));
    second.push(openAt(tree.path() / "a"), false);
    EXPECT_TRUE(second.holds(top.number()) && second.holds(a.number()));
    EXPECT_FALSE(second.holds(b.number()) || second.holds(c.number()));

    DirectoryChain third;
    third.start(second.above(1));
    EXPECT_TRUE(third.holds(top.number()) && third.holds(a.number()));
    first.pop();
    EXPECT_FALSE(first.holds(b.number()));
}

}  // namespace
}  // namespace toolkit::quorvis
