// Databases whose pages the tests write themselves.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/toolkit/machine/packages/SqliteDatabases.h"

namespace toolkit {
namespace {

constexpr std::size_t kPage = 512;

// A cell with the columns 0 and `value`.
std::string rowOf(int value) {
    return std::string("\x05\x01\x03\x01\x01\x00", 6) + static_cast<char>(value);
}

std::string pageOf(const std::string& header, const std::vector<std::string>& cells) {
    std::string pointers;
    std::string content;
    for (const std::string& cell : cells) {
        content.insert(0, cell);
        pointers += number(kPage - content.size(), 2);
    }
    std::string page = header + pointers;
    EXPECT_LE(page.size() + content.size(), kPage);
    page.resize(kPage - content.size(), '\0');
    page.replace(3, 2, number(cells.size(), 2));
    return page + content;
}

std::string leafOf(const std::vector<std::string>& cells) {
    return pageOf(std::string("\x0d\0\0\0\0\0\0\0", 8), cells);
}

std::string interiorOf(const std::vector<std::uint64_t>& children, std::uint64_t last) {
    std::vector<std::string> cells;
    for (const std::uint64_t child : children) cells.push_back(number(child, 4) + '\0');
    return pageOf(std::string("\x05\0\0\0\0\0\0\0", 8) + number(last, 4), cells);
}

// A database whose only table has these pages. The first one is the root and has the number 2.
std::string databaseOfPages(const std::vector<std::string>& pages) {
    static const std::string kFirst = databaseOf("pragma page_size=512; create table t(a, b);");
    std::string file = kFirst.substr(0, kPage);
    for (const std::string& page : pages) file += page;
    return file;
}

Reading readPages(const std::vector<std::string>& pages) {
    return readThrough({databaseOfPages(pages), {}});
}

TEST(SqlitePages, ATreeMayHaveTwentyLevels) {
    for (const std::size_t levels : {20U, 21U}) {
        std::vector<std::string> pages;
        while (pages.size() + 1 < levels) pages.push_back(interiorOf({}, pages.size() + 3));
        pages.push_back(leafOf({rowOf(1)}));
        EXPECT_EQ(numbersTo(levels == 20 ? 1 : 0), readPages(pages).numbers) << levels;
        pages[0] = interiorOf({3}, 3);
        EXPECT_EQ(numbersTo(levels == 20 ? 1 : 0), readPages(pages).numbers) << levels;
    }
}

TEST(SqlitePages, TheRowsOfAPageMayFillIt) {
    std::vector<std::string> rows;
    for (int i = 1; i <= 56; ++i) rows.push_back(rowOf(i));
    ASSERT_EQ(kPage, 8 + 56 * (2 + rows[0].size()));
    const Reading reading = readPages({leafOf(rows)});
    EXPECT_EQ(SqliteReading::Complete, reading.result);
    EXPECT_EQ(numbersTo(56), reading.numbers);
}

TEST(SqlitePages, ADamagedRowCostsNoOther) {
    const std::string cutRow = number(100, 1);  // is at the end of the page
    const std::string lostRow = number(0x8400, 2) + '\x01' + std::string(39, 'x') + number(99, 4);
    const std::vector<std::string> rows = {cutRow, rowOf(1), lostRow, rowOf(2), lostRow, rowOf(3)};
    const Reading reading = readPages({leafOf(rows)});
    EXPECT_EQ(SqliteReading::Incomplete, reading.result);
    EXPECT_EQ(numbersTo(3), reading.numbers);
}

TEST(SqlitePages, ARowWithoutItsIdIsDamaged) {
    const std::string emptyRow("\0\x01", 2);
    const std::string cutRow = number(0, 1);  // is at the end of the page
    EXPECT_EQ(SqliteReading::Complete, readPages({leafOf({emptyRow, rowOf(1)})}).result);
    const Reading reading = readPages({leafOf({cutRow, rowOf(1)})});
    EXPECT_EQ(SqliteReading::Incomplete, reading.result);
    EXPECT_EQ(numbersTo(1), reading.numbers);
}

// A page full of pointers to one long cell would cost hours otherwise.
TEST(SqlitePages, DamagedRowsThatOverlapEndTheirPage) {
    const std::string lostRow = number(0x8400, 2) + '\x01' + std::string(39, 'x') + number(99, 4);
    std::string page = leafOf({rowOf(1), lostRow, lostRow, rowOf(2), lostRow, lostRow, rowOf(3)});
    EXPECT_EQ(numbersTo(3), readPages({page}).numbers);
    page = leafOf({rowOf(1), lostRow, rowOf(3)});
    page.replace(3, 2, number(20, 2));
    for (std::size_t i = 2; i < 20; ++i) page.replace(8 + 2 * i, 2, page.substr(10, 2));
    page.replace(8 + 2 * 19, 2, page.substr(8, 2));
    EXPECT_EQ(numbersTo(1), readPages({page}).numbers);
}

TEST(SqlitePages, ADamagedPageCostsNoOther) {
    const std::vector<std::string> leaves = {leafOf({rowOf(1)}), leafOf({rowOf(2)}), leafOf({rowOf(3)})};
    std::vector<std::string> pages = {interiorOf({3, 4}, 5)};
    pages.insert(pages.end(), leaves.begin(), leaves.end());
    EXPECT_EQ(SqliteReading::Complete, readPages(pages).result);
    EXPECT_EQ(numbersTo(3), readPages(pages).numbers);
    for (std::size_t i = 0; i < 3; ++i) {
        for (const char type : {'\x02', '\x0a', '\x0f'}) {
            std::vector<std::string> damaged = pages;
            damaged[1 + i][0] = type;
            std::vector<std::int64_t> others = numbersTo(3);
            others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
            EXPECT_EQ(SqliteReading::Incomplete, readPages(damaged).result);
            EXPECT_EQ(others, readPages(damaged).numbers);
        }
    }
}

TEST(SqlitePages, PointersToCellsMustBeInThePage) {
    const std::string row = rowOf(1);
    std::string page = interiorOf({}, 3);
    const std::size_t fitting = (kPage - 12) / 2;
    page.replace(3, 2, number(fitting, 2));
    Reading reading = readPages({page, leafOf({row})});
    EXPECT_EQ(SqliteReading::Incomplete, reading.result) << "no cell has room";
    EXPECT_EQ(numbersTo(1), reading.numbers);
    page.replace(3, 2, number(fitting + 1, 2));
    reading = readPages({page, leafOf({row})});
    EXPECT_EQ(SqliteReading::Incomplete, reading.result);
    EXPECT_EQ(numbersTo(0), reading.numbers);
    page = leafOf({row});
    page.replace(3, 2, number((kPage - 8) / 2 + 1, 2));
    EXPECT_EQ(numbersTo(0), readPages({page}).numbers);
}

TEST(SqlitePages, CellsMustBeBehindThePointers) {
    for (const std::size_t offset : {kPage - 4, kPage - 3, kPage, kPage + 1, std::size_t{65535}}) {
        std::string page = interiorOf({}, 4);
        page.replace(3, 2, number(1, 2));
        page.replace(12, 2, number(offset, 2));
        page.replace(kPage - 4, 4, number(3, 4));
        const Reading reading = readPages({page, leafOf({rowOf(1)}), leafOf({rowOf(2)})});
        EXPECT_EQ(offset == kPage - 4 ? SqliteReading::Complete : SqliteReading::Incomplete, reading.result);
        EXPECT_EQ(offset == kPage - 4 ? 2U : 1U, reading.numbers.size()) << offset;
    }
    for (const std::size_t offset : {12U, 11U}) {
        std::string page = leafOf({rowOf(1), rowOf(1)});
        page.replace(8, 2, number(offset, 2));
        page.replace(offset, 7, rowOf(1));
        page.replace(10, 2, number(kPage - 14, 2));
        EXPECT_EQ(offset == 12 ? 2U : 1U, readPages({page}).numbers.size()) << offset;
    }
}

TEST(SqlitePages, APointerToAChildIsNotReadBeyondThePage) {
    // Its three bytes in the page, and a zero, would lead to the page 256.
    std::string root = interiorOf({}, 3);
    root.replace(3, 2, number(1, 2));
    root.replace(12, 2, number(kPage - 3, 2));
    root.replace(kPage - 3, 3, number(1, 3));
    std::vector<std::string> pages(255, leafOf({}));
    pages[0] = root;
    pages[1] = leafOf({rowOf(1)});
    pages[254] = leafOf({rowOf(2)});
    EXPECT_EQ(numbersTo(1), readPages(pages).numbers);
}

TEST(SqlitePages, PagesOfIndexesAreNotRead) {
    for (const char type : {'\x02', '\x0a'}) {
        std::string root = interiorOf({}, 3);
        root[0] = type;
        const Reading reading = readPages({root, leafOf({rowOf(1)})});
        EXPECT_EQ(SqliteReading::Incomplete, reading.result);
        EXPECT_EQ(numbersTo(0), reading.numbers);
    }
}

TEST(SqlitePages, WhatWasAppendedMeanwhileIsNotRead) {
    const std::string file = databaseOfPages({interiorOf({3}, 4), leafOf({rowOf(1)}), leafOf({rowOf(2)})});
    SqliteInput input = inputOf(file);
    input.size = 4 * kPage - 1;
    EXPECT_EQ(numbersTo(1), readThrough(input, {}).numbers);
}

}  // namespace
}  // namespace toolkit
