#include "tessa/TextStore.h"

#include <gtest/gtest.h>

#include "tessa/Utf8.h"
#include "tests/support/Allocations.h"

namespace tessa {
namespace {

TEST(TextStore, ATextIsWidenedWhenItIsRequested) {
    TextStore store;
    const char* const text = store.add("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_STREQ(text, "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    const wchar_t* const wide = TextStore::wide(text);
    EXPECT_STREQ(wide, L"a\u00E4\u20AC\U0001F600");
    EXPECT_EQ(TextStore::wide(text), wide) << "the same place each time";
    EXPECT_STREQ(text, "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80") << "the text itself does not change";
}

TEST(TextStore, TheWideFormOfAnEmptyTextIsEmpty) {
    TextStore store;
    EXPECT_STREQ(TextStore::wide(store.add("")), L"");
    EXPECT_STREQ(TextStore::wide(""), L"");
}

// Texts of all lengths stand beside each other at all alignments, in any order of the requests.
TEST(TextStore, WideFormsDoNotOverlap) {
    TextStore store;
    std::vector<std::string> expected;
    std::vector<const char*> texts;
    for (std::size_t i = 0; i < 20'000; ++i) {
        expected.emplace_back(i % 97, static_cast<char>('a' + i % 26));
        texts.push_back(store.add(expected.back()));
    }
    for (std::size_t i = 0; i < texts.size(); i += 2) TextStore::wide(texts[i]);
    for (std::size_t i = texts.size(); i-- > 0;)
        ASSERT_EQ(TextStore::wide(texts[i]), widened(expected[i])) << i;
    for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(texts[i], expected[i]) << i;
}

TEST(TextStore, ATextIsBuiltInPieces) {
    TextStore store;
    EXPECT_FALSE(store.isOpen());
    std::string expected;
    for (int i = 0; i < 100'000; ++i) {
        const std::string piece = std::to_string(i);
        store.append(piece.data(), piece.size());
        expected += piece;
    }
    EXPECT_TRUE(store.isOpen());
    EXPECT_EQ(store.open(), expected);
    const char* const text = store.finish();
    EXPECT_EQ(text, expected);
    EXPECT_EQ(TextStore::wide(text), widened(expected));
    EXPECT_FALSE(store.isOpen());
}

TEST(TextStore, ADroppedTextLeavesNothing) {
    TextStore store;
    store.append("old", 3);
    store.drop();
    EXPECT_FALSE(store.isOpen());
    EXPECT_STREQ(store.add("new"), "new");
}

TEST(TextStore, WideningAllocatesNothing) {
    TextStore store;
    const char* const text = store.add(std::string(100'000, 'x'));
    const zavtest::FailingAllocation first(1);
    EXPECT_EQ(std::wcslen(TextStore::wide(text)), 100'000U);
    EXPECT_FALSE(first.happened());
}

TEST(TextStore, TheNameThatFollowedLastTimeIsExpected) {
    TextStore store;
    EXPECT_EQ(store.expectedName(), "");
    const TextStore::Name* const a = store.intern("a");
    EXPECT_EQ(store.expectedName(), "");
    store.intern("b");
    EXPECT_EQ(store.intern("a"), a);
    EXPECT_EQ(store.expectedName(), "b");
    store.intern("c");
    store.intern("a");
    EXPECT_EQ(store.expectedName(), "c");
}

TEST(TextStore, MemoryIsKeptForNewTexts) {
    TextStore store;
    const char* const old = store.add(std::string(3'000, 'x'));
    TextStore::wide(old);
    store.intern("name");
    store.clear();
    const char* const text = store.add("new");
    EXPECT_EQ(text, old) << "at the same place";
    EXPECT_STREQ(TextStore::wide(text), L"new");
    EXPECT_EQ(store.expectedName(), "");
    EXPECT_STREQ(store.intern("name")->text.text(), L"name");
}

TEST(TextStore, ClearedAgainAndAgainItStaysWithinItsBudget) {
    TextStore store;
    const std::string text(10'000'000, 'x');
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(store.add(text), text);
        store.clear();
    }
}

}  // namespace
}  // namespace tessa
