#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/LeafTester.h"

namespace toolkit::quorvis {
namespace {

TEST(CompareLeaf, AComparisonThatHoldsGivesOneItem) {
    LeafTester tester;
    const struct {
        Attribute test;
        const char* left;
        const char* right;
        bool holds;
    } kCases[] = {
        {Attribute::AtLeast, "1.10", "1.9", true}, {Attribute::AtLeast, "1.8", "1.9", false},
        {Attribute::Equals, "2.0", "2.0", true},   {Attribute::Below, "2.0", "2.0", false},
        {Attribute::AtMost, "2.0", "2.0", true},   {Attribute::Above, "2.1", "2.0", true},
    };
    for (const auto& test : kCases) {
        const LeafResult result =
            tester.ask(LeafKind::Compare, {{Attribute::Left, test.left}, {test.test, test.right}});
        EXPECT_EQ(test.holds ? 1U : 0U, result.items.size()) << test.left << test.right;
        EXPECT_FALSE(result.incomplete);
    }
}

TEST(CompareLeaf, WhatCannotBeComparedIsUnknown) {
    LeafTester tester;
    const LeafResult result = tester.ask(
        LeafKind::Compare, {{Attribute::Left, "many"}, {Attribute::Above, "3"}, {Attribute::Scheme, "int"}});
    EXPECT_TRUE(result.items.empty());
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(result));
}

}  // namespace
}  // namespace toolkit::quorvis
