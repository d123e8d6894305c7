#include "sw/SWGuidIndex.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "tessa/Utf8.h"

namespace zav {
namespace {

class SWGuidIndexTest : public testing::Test {
  protected:
    ZAVSwResult* add(const std::string& guid) {
        results_.push_back(std::make_unique<ZAVSwResult>());
        results_.back()->guid = guids_.emplace_back(guid).c_str();
        return results_.back().get();
    }

    std::vector<ZAVSwResult*> found(const wchar_t* guid) {
        const SWGuidIndex::Entry* const entry = index_.find(guid);
        EXPECT_EQ(entry == nullptr ? nullptr : entry->first, index_.first(guid));
        if (entry == nullptr) return {};
        EXPECT_EQ(*entry->results, entry->first);
        EXPECT_FALSE(entry->wasRequested);
        return {entry->results, entry->results + entry->count};
    }

    std::deque<std::string> guids_;
    std::vector<std::unique_ptr<ZAVSwResult>> results_;
    SWGuidIndex index_;
};

using Found = std::vector<ZAVSwResult*>;

TEST_F(SWGuidIndexTest, IsEmptyAtFirst) {
    EXPECT_EQ(index_.first(L""), nullptr);
    index_.build(results_);
    EXPECT_EQ(index_.first(L""), nullptr);
}

TEST_F(SWGuidIndexTest, FindsTheResultsOfAnIdentifierInOrder) {
    ZAVSwResult* const a1 = add("a");
    ZAVSwResult* const b = add("b");
    ZAVSwResult* const a2 = add("a");
    ZAVSwResult* const none = add("");
    ZAVSwResult* const a3 = add("a");
    index_.build(results_);
    EXPECT_EQ(found(L"a"), (Found{a1, a2, a3}));
    EXPECT_EQ(found(L"b"), Found{b});
    EXPECT_EQ(found(L""), Found{none});
    for (const wchar_t* const missing : {L"A", L"aa", L"c"}) EXPECT_EQ(found(missing), Found());
}

TEST_F(SWGuidIndexTest, BuiltAgainItForgetsWhatWasBefore) {
    add("a");
    add("a");
    index_.build(results_);
    results_.pop_back();
    ZAVSwResult* const b = add("b");
    index_.build(results_);
    EXPECT_EQ(found(L"a"), Found{results_.front().get()});
    EXPECT_EQ(found(L"b"), Found{b});
    index_.clear();
    EXPECT_EQ(found(L"b"), Found());
}

// Both have the same low bits as a character of an identifier, from which its UTF-8 form is made.
TEST_F(SWGuidIndexTest, WhatIsNoCharacterIsFoundNowhere) {
    ZAVSwResult* const face = add("\xF0\x9F\x98\x80");
    index_.build(results_);
    EXPECT_EQ(found(L"\U0001F600"), Found{face});
    const wchar_t beyond[] = {0x1F600 + 0x400000, 0};
    EXPECT_EQ(found(beyond), Found());
    const wchar_t negative[] = {static_cast<wchar_t>(0xFFC1F600), 0};
    EXPECT_EQ(found(negative), Found());
}

// Would be noticeably slow if each lookup searched all results.
TEST_F(SWGuidIndexTest, FindsEachOfAHundredThousand) {
    constexpr int kMany = 100'000;
    for (int i = 0; i < kMany; ++i) add("prefix-" + std::to_string(i / 2));
    index_.build(results_);
    for (std::size_t i = 0; i < kMany; i += 2) {
        ASSERT_EQ(found(tessa::widened(results_[i]->guid).c_str()),
                  (Found{results_[i].get(), results_[i + 1].get()}));
    }
    EXPECT_EQ(found(L"prefix-50000"), Found());
}

}  // namespace
}  // namespace zav
