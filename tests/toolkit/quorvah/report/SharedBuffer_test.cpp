#include "toolkit/quorvah/report/SharedBuffer.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit::quorvah {
namespace {

TEST(SharedBuffer, GivesBackTextsAtTheirOffsetsOnly) {
    SharedBuffer texts;
    const std::string large(100000, 'x');
    ASSERT_EQ(0U, texts.append("first"));
    const auto place = texts.append(large);
    ASSERT_TRUE(place);
    const std::shared_ptr<const void> text = texts.at(*place, large.size());
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(large, std::string_view(static_cast<const char*>(text.get()), large.size()));
    EXPECT_EQ(nullptr, texts.at(*place, large.size() + 1));
    EXPECT_EQ(nullptr, texts.at(*place + 1, 1));
    EXPECT_EQ(nullptr, texts.at(*place * 1000, 1));
    EXPECT_EQ(nullptr, texts.at(0, ~std::uint64_t{0}));
}

}  // namespace
}  // namespace toolkit::quorvah
