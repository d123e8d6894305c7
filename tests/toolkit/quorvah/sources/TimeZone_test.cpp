#include "toolkit/quorvah/sources/TimeZone.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(TimeZone, FollowsTheRulesOfTheTree) {
    const Root root(QUORVAH_TEST_TREES "/x86-server");
    const struct {
        std::int64_t time;
        long minutes;
        bool summer;
    } cases[] = {{1704067200, 60, false},  // 2024-01-01
                 {1719820800, 120, true},  // 2024-07-01
                 {1711846799, 60, false},  // the last second before daylight saving time in 2024
                 {1711846800, 120, true},
                 {4118083200, 120, true}};  // 2100-07-01, by the rule after the table
    for (const auto& [time, minutes, summer] : cases) {
        const auto offset = zoneOffset(root, time);
        ASSERT_TRUE(offset.has_value()) << time;
        EXPECT_EQ(offset->minutes, minutes) << time;
        EXPECT_EQ(offset->daylight, summer) << time;
    }
    EXPECT_EQ(zoneName(root), "Europe/Vienna");
}

TEST(TimeZone, RestoresTheZoneOfTheProgram) {
    ASSERT_EQ(setenv("TZ", "Asia/Tokyo", 1), 0);
    EXPECT_TRUE(zoneOffset(Root(QUORVAH_TEST_TREES "/x86-server"), 1719820800).has_value());
    EXPECT_STREQ(getenv("TZ"), "Asia/Tokyo");
    unsetenv("TZ");
    EXPECT_TRUE(zoneOffset(Root(QUORVAH_TEST_TREES "/x86-server"), 1719820800).has_value());
    EXPECT_EQ(getenv("TZ"), nullptr);
}

TEST(TimeZone, IsUnknownWithoutReadableRules) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    tree.write("etc/localtime", "no zone at all");
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    EXPECT_EQ(zoneName(root), "");
}

TEST(TimeZone, NameComesFromTheLinkOrElseFromTheFile) {
    const std::pair<const char*, const char*> cases[] = {
        {"/usr/share/zoneinfo/America/Argentina/Ushuaia", "America/Argentina/Ushuaia"},
        {"../usr/share/zoneinfo/posix/UTC", "UTC"},
        {"/opt/elsewhere", "Europe/Paris"}};
    for (const auto& [link, name] : cases) {
        const ScratchDir tree;
        tree.write("etc/timezone", "Europe/Paris\n");
        std::filesystem::create_symlink(link, tree.path() / "etc/localtime");
        EXPECT_EQ(zoneName(Root(tree.path().string())), name) << link;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
