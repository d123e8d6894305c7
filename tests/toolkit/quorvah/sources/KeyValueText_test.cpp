#include "toolkit/quorvah/sources/KeyValueText.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(KeyValueText, WordsAreSeparatedByBlanks) {
    EXPECT_EQ(wordsOf(" a  b\tc "), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(wordsOf("").empty());
    EXPECT_TRUE(wordsOf(" \t ").empty());
}

TEST(KeyValueText, AValueFollowsItsCompleteKey) {
    const std::string_view text = "MemTotalX: 1 kB\nMemTotal:   16 kB\nbtime 1719820800\nempty:\n";
    EXPECT_EQ(valueForKey(text, "MemTotal"), "16 kB");
    EXPECT_EQ(valueForKey(text, "btime"), "1719820800");
    EXPECT_EQ(valueForKey(text, "empty"), "");
    EXPECT_EQ(valueForKey(text, "Mem"), "");
    EXPECT_EQ(valueForKey(text, "missing"), "");
    EXPECT_EQ(valueForKey("", "x"), "");
}

TEST(KeyValueText, ASizeIsInTheUnitOfTheKernelOrUnknown) {
    EXPECT_EQ(kibOfKey("MemTotal:   16 kB\n", "MemTotal"), 16U);
    for (const char* const line :
         {"MemTotal: 12 MB", "MemTotal: 12", "MemTotal: 12 KB x", "MemTotal: 1.5 kB", "MemTotal: kB"})
        EXPECT_EQ(kibOfKey(line, "MemTotal"), std::nullopt) << line;
}

}  // namespace
}  // namespace toolkit::quorvah
