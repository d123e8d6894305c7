#include "toolkit/quorvah/sources/FileSystemUsage.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(FileSystemUsage, MissingPathsHaveNoUsage) {
    const UsageAnswers answers = askUsage({"/", "/no/such/place", "/"});
    ASSERT_EQ(3U, answers.usages.size());
    EXPECT_TRUE(answers.complete);
    ASSERT_TRUE(answers.usages[0].has_value());
    EXPECT_FALSE(answers.usages[1].has_value());
    ASSERT_TRUE(answers.usages[2].has_value());
    EXPECT_EQ(answers.usages[0]->size, answers.usages[2]->size);
    EXPECT_GT(answers.usages[0]->size, 0U);
}

TEST(FileSystemUsage, NoPathsGiveNoUsages) {
    const UsageAnswers answers = askUsage({});
    EXPECT_TRUE(answers.complete);
    EXPECT_TRUE(answers.usages.empty());
}

}  // namespace
}  // namespace toolkit::quorvah
