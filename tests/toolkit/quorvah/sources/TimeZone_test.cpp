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

TEST(TimeZone, IsUtcInASystemWithoutRules) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    tree.write("etc/passwd", "root:x:0:0:root:/root:/bin/sh\n");
    const std::optional<ZoneOffset> offset = zoneOffset(root, 1719820800);
    ASSERT_TRUE(offset.has_value());
    EXPECT_EQ(offset->minutes, 0);
    EXPECT_FALSE(offset->daylight);
    tree.write("etc/localtime", "no zone at all");
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
}

TEST(TimeZone, IsUnknownWithoutReadableRules) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    tree.write("etc/localtime", "no zone at all");
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    EXPECT_EQ(zoneName(root), "");
}

// The C library would allocate memory for whatever the counts announce.
TEST(TimeZone, IsUnknownWhenTheHeadersAnnounceMoreThanTheFileContains) {
    const std::optional<std::string> rules = Root(QUORVAH_TEST_TREES "/x86-server").read("/etc/localtime");
    ASSERT_TRUE(rules.has_value());
    const std::size_t second = rules->rfind("TZif");
    ASSERT_GT(second, 0U);
    const ScratchDir tree;
    const Root root(tree.path().string());
    tree.write("etc/localtime", *rules);
    EXPECT_TRUE(zoneOffset(root, 0).has_value());
    for (const std::size_t header : {std::size_t{0}, second}) {
        for (std::size_t count = 0; count < 6; ++count) {
            std::string changed = *rules;
            changed[header + 20 + 4 * count] = '\x7F';
            tree.write("etc/localtime", changed);
            EXPECT_FALSE(zoneOffset(root, 0).has_value()) << header << ' ' << count;
        }
    }
    for (const std::size_t size : {std::size_t{43}, std::size_t{44}, second, second + 43, second + 44}) {
        tree.write("etc/localtime", rules->substr(0, size));
        EXPECT_FALSE(zoneOffset(root, 0).has_value()) << size;
    }
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
