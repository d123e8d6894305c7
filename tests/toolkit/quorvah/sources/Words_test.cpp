#include "toolkit/quorvah/sources/Words.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(Words, StandBetweenBlanks) {
    EXPECT_EQ(wordsOf(" a  b\tc "), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(wordsOf("").empty());
    EXPECT_TRUE(wordsOf(" \t ").empty());
}

TEST(Words, AValueStandsBehindItsWholeKey) {
    const std::string_view text = "MemTotalX: 1 kB\nMemTotal:   16 kB\nbtime 1719820800\nempty:\n";
    EXPECT_EQ(valueOf(text, "MemTotal"), "16 kB");
    EXPECT_EQ(valueOf(text, "btime"), "1719820800");
    EXPECT_EQ(valueOf(text, "empty"), "");
    EXPECT_EQ(valueOf(text, "Mem"), "");
    EXPECT_EQ(valueOf(text, "missing"), "");
    EXPECT_EQ(valueOf("", "x"), "");
}

TEST(BootParameters, TheLastOneCounts) {
    const std::string_view line = "quiet root=/dev/sda1 x.root=no root=\"/dev/my disk\" rootwait";
    EXPECT_EQ(bootParameter(line, "root"), "/dev/my disk");
    EXPECT_EQ(bootParameter(line, "quiet"), "");
    EXPECT_EQ(bootParameter(line, "roo"), "");
    EXPECT_EQ(bootParameter("", "root"), "");
}

TEST(BootParameters, SecretsAreCut) {
    const std::pair<const char*, const char*> cases[] = {
        {"a password=hunter2 b", "a password=*** b"},
        {"grub.PASSWD=x", "grub.PASSWD=***"},
        {"join_token=\"two words\" quiet", "join_token=*** quiet"},
        {"wpa.psk=a secret_key=b apikey=c", "wpa.psk=*** secret_key=*** apikey=***"},
        {"password", "password"},
        {"root=/dev/password", "root=/dev/password"},
        {"  a   b  ", "a b"},
        {"", ""},
    };
    for (const auto& [line, cut] : cases) EXPECT_EQ(withoutSecrets(line), cut) << line;
}

}  // namespace
}  // namespace toolkit::quorvah
