#include "toolkit/quorvis/language/LeafSyntax.h"

#include <gtest/gtest.h>

namespace toolkit::quorvis {
namespace {

TEST(AttributeNames, AreFoundByName) {
    for (int i = 0; i <= static_cast<int>(Attribute::Values); ++i) {
        const auto attribute = static_cast<Attribute>(i);
        EXPECT_EQ(attributeNamed(nameOf(attribute)), attribute);
    }
    EXPECT_EQ(nameOf(Attribute::ArgsRegex), "argsRegex");
    EXPECT_EQ(nameOf(Attribute::Pattern), "pattern");
    EXPECT_FALSE(attributeNamed("Path").has_value());
}

}  // namespace
}  // namespace toolkit::quorvis
