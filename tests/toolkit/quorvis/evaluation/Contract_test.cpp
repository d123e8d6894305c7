// Lookups that exceed their budget.
#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/ElfBuilder.h"
#include "tests/toolkit/quorvis/LeafTester.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {
namespace {

class ContractTest : public testing::Test {
  protected:
    void expectUnknown(const LeafResult& result, EventCode code) {
        EXPECT_TRUE(result.incomplete);
        EXPECT_TRUE(result.items.empty());
        ASSERT_EQ(std::vector{code}, LeafTester::codes(result));
    }
    LeafResult askAboutFile(LeafKind kind, LeafTester::Attributes attributes) {
        attributes.emplace_back(Attribute::Path, "/f");
        return tester_.ask(kind, std::move(attributes));
    }

    LeafTester tester_;
};

TEST_F(ContractTest, WithoutTimeNoLeafReadsAFile) {
    tester_.tree.write("f", ElfBuilder().build());
    tester_.settings.evaluation.timeLimit = std::chrono::seconds(0);
    const std::string sum(64, '0');
    expectUnknown(askAboutFile(LeafKind::File, {{Attribute::Sha256, sum}}), EventCode::Deadline);
    expectUnknown(askAboutFile(LeafKind::Content, {{Attribute::Regex, "x"}}), EventCode::Deadline);
    expectUnknown(askAboutFile(LeafKind::Elf, {}), EventCode::Deadline);
    expectUnknown(askAboutFile(LeafKind::Xml, {{Attribute::Select, "/a"}}), EventCode::Deadline);
    expectUnknown(askAboutFile(LeafKind::Property, {{Attribute::Format, "json"}, {Attribute::Key, "k"}}),
                  EventCode::Deadline);
    for (const char* const format : {"go", "rust", "jar", "npm"})
        expectUnknown(askAboutFile(LeafKind::Component, {{Attribute::Format, format}}), EventCode::Deadline);
    for (const char* const format : {"jar", "pe", "python-dist"})
        expectUnknown(askAboutFile(LeafKind::FileVersion, {{Attribute::Format, format}}),
                      EventCode::Deadline);
}

TEST_F(ContractTest, TooManyBytesOfMatchesLeaveTheLeafUnknown) {
    std::string text;
    for (int i = 0; i < 900; ++i) text += std::string(7'000, 'x') + "\n";
    tester_.tree.write("f", text);
    expectUnknown(askAboutFile(LeafKind::Content, {{Attribute::Regex, "x+"}}), EventCode::LimitBytes);
}

TEST_F(ContractTest, ASparseFileOfATerabyteIsTooLargeForEveryLeaf) {
    tester_.tree.write("f", "MZ");
    std::filesystem::resize_file(tester_.tree.path() / "f", std::uintmax_t{1} << 40);
    expectUnknown(askAboutFile(LeafKind::File, {{Attribute::Sha256, std::string(64, '0')}}),
                  EventCode::LimitBytes);
    expectUnknown(askAboutFile(LeafKind::Content, {{Attribute::Regex, "x"}}), EventCode::LimitBytes);
    expectUnknown(askAboutFile(LeafKind::Xml, {{Attribute::Select, "/a"}}), EventCode::LimitBytes);
    EXPECT_TRUE(askAboutFile(LeafKind::Elf, {}).items.empty());
    for (const char* const format : {"jar", "pe", "python-dist"})
        EXPECT_TRUE(askAboutFile(LeafKind::FileVersion, {{Attribute::Format, format}}).items.empty());
}

TEST_F(ContractTest, LongValuesAreCutInEveryFormat) {
    const std::string endless(std::size_t{1} << 20, '1');
    const auto lengthOf = [this](LeafKind kind, LeafTester::Attributes attributes, const char* field,
                                 const std::string& content) {
        tester_.tree.write("f", content);
        return LeafTester::first(askAboutFile(kind, std::move(attributes)), field).size();
    };
    for (const char* const format : {"properties", "ini", "shell"}) {
        EXPECT_EQ(kMaxValueSize,
                  lengthOf(LeafKind::Property, {{Attribute::Format, format}, {Attribute::Key, "k"}}, "value",
                           "k=" + endless))
            << format;
    }
    EXPECT_EQ(kMaxValueSize,
              lengthOf(LeafKind::Property, {{Attribute::Format, "json"}, {Attribute::Key, "k"}}, "value",
                       "{\"k\": \"" + endless + "\"}"));
    EXPECT_EQ(kMaxValueSize,
              lengthOf(LeafKind::Xml, {{Attribute::Select, "/a/@k"}}, "value", "<a k='" + endless + "'/>"));
    EXPECT_EQ(kMaxValueSize,
              lengthOf(LeafKind::Xml, {{Attribute::Select, "/a"}}, "value", "<a>" + endless + "</a>"));
    EXPECT_EQ(kMaxValueSize, lengthOf(LeafKind::Content, {{Attribute::Regex, "1+"}}, "match", endless));
    EXPECT_EQ(kMaxValueSize, lengthOf(LeafKind::FileVersion, {{Attribute::Format, "python-dist"}}, "version",
                                      "Version: " + endless.substr(0, 100'000)));
}

TEST_F(ContractTest, TooManySwidTagsAreNotAllRead) {
    const std::string name(8'000, 'n');
    for (int i = 0; i < 2'200; ++i) {
        tester_.tree.write("usr/lib/swidtag/" + std::to_string(i) + ".swidtag",
                           "<SoftwareIdentity name='" + name + "' tagId='" + name + "'/>");
    }
    const LeafResult result = tester_.ask(LeafKind::SwidTag, {{Attribute::Name, "other"}});
    expectUnknown(result, EventCode::LimitBytes);
}

TEST(LookupBudget, CountsNothingOutsideOfALeaf) {
    LookupBudget budget(LookupBudget::Clock::time_point::max());
    budget.chargeRead(UINT64_MAX);
    budget.chargeKept(UINT64_MAX);
    const LookupBudget::LeafScope leaf(budget, limitsOf(LeafKind::Content, Settings()));
    EXPECT_THROW(budget.chargeRead(UINT64_MAX), BudgetExceeded);
    EXPECT_THROW(budget.chargeKept(std::uint64_t{1} << 30), BudgetExceeded);
}

TEST(LookupBudget, PublishesTheDeadlineOfTheCurrentWork) {
    SharedDeadline shared;
    LookupBudget budget(LookupBudget::Clock::now() - std::chrono::hours(1));
    budget.publishDeadline(shared);
    EXPECT_FALSE(shared.isLateBy({}));
    {
        const LookupBudget::LeafScope leaf(budget, limitsOf(LeafKind::Content, Settings()));
        EXPECT_TRUE(shared.isLateBy(std::chrono::minutes(59)));
        {
            const LookupBudget::DeadlineScope later(budget,
                                                    LookupBudget::Clock::now() + std::chrono::hours(1));
            EXPECT_FALSE(shared.isLateBy({}));
        }
        EXPECT_TRUE(shared.isLateBy(std::chrono::minutes(59)));
    }
    EXPECT_FALSE(shared.isLateBy({}));
}

}  // namespace
}  // namespace toolkit::quorvis
