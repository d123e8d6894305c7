#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/toolkit/machine/packages/SqliteDatabases.h"

namespace toolkit {
namespace {

TEST(SqliteFile, ValuesOfEveryKindAreRead) {
    const std::string file = databaseOf(
        "create table t(id integer primary key, v); insert into t(v) values "
        "(null),(0),(1),(-1),(127),(-32768),(8388607),(-2147483648),(140737488355327),(-9223372036854775808),"
        "(1.5),"
        "('text'),(x'00ff'),('');");
    bool whole = false;
    const std::vector<Row> rows = column(file, "t", 1, whole);
    EXPECT_TRUE(whole);
    ASSERT_EQ(14U, rows.size());
    EXPECT_EQ(SqliteValue::Kind::Null, rows[0].kind);
    const std::int64_t kNumbers[] = {0,        1, -1, 127, -32768, 8388607, -2147483648LL, 140737488355327LL,
                                     INT64_MIN};
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(SqliteValue::Kind::Integer, rows[i + 1].kind) << i;
        EXPECT_EQ(kNumbers[i], rows[i + 1].number) << i;
    }
    EXPECT_EQ(SqliteValue::Kind::Real, rows[10].kind);
    EXPECT_EQ("text", rows[11].bytes);
    EXPECT_EQ(SqliteValue::Kind::Blob, rows[12].kind);
    EXPECT_EQ(std::string("\0\xff", 2), rows[12].bytes);
    EXPECT_EQ(SqliteValue::Kind::Text, rows[13].kind);
}

// Payload sizes around all limits between page, local part and overflow chain.
TEST(SqliteFile, PayloadsOfAllSizesAreReadFromPagesOfAllSizes) {
    for (const int pageSize : {512, 1024, 4096, 65536}) {
        const std::string file = databaseOf(
            "pragma page_size=" + std::to_string(pageSize) +
            "; create table other(x); create table t(id integer primary key, v);"
            "with recursive n(i) as (select 1 union all select i + 17 from n where i < 9000) "
            "insert into t select i, zeroblob(i) from n; insert into t values (100000, zeroblob(300000));");
        bool whole = false;
        const std::vector<Row> rows = column(file, "t", 1, whole);
        EXPECT_TRUE(whole) << pageSize;
        ASSERT_EQ(532U, rows.size()) << pageSize;
        for (std::size_t i = 0; i < 531; ++i) ASSERT_EQ(1 + 17 * i, rows[i].bytes.size()) << pageSize;
        EXPECT_EQ(300000U, rows[531].bytes.size()) << pageSize;
    }
}

// The lengths differ in how much of the last overflow page they fill.
TEST(SqliteFile, ALongPayloadHasItsBytesInOrder) {
    std::string numbers;
    for (int i = 1; i <= 2000; ++i) numbers += std::to_string(i) + ",";
    for (std::size_t length = numbers.size() - 508; length <= numbers.size(); length += 127) {
        const std::string expected = numbers.substr(0, length);
        const std::string file =
            databaseOf("pragma page_size=512; create table t(v); insert into t values ('" + expected + "');");
        std::vector<std::string> records;
        const auto add = [&](std::string_view record) { records.emplace_back(record); };
        EXPECT_EQ(SqliteReading::Complete, readSqliteTable(inputOf(file), {}, "t", add));
        ASSERT_EQ(1U, records.size());
        EXPECT_EQ(expected, records[0].substr(4)) << "behind the sizes of the header and the text";
    }
}

TEST(SqliteFile, AMissingTableIsReported) {
    const std::string file = databaseOf("create table t(v); create index i on t(v);");
    bool whole = true;
    EXPECT_TRUE(column(file, "u", 0, whole).empty());
    EXPECT_FALSE(whole);
    EXPECT_TRUE(column(file, "i", 0, whole).empty());
    EXPECT_FALSE(whole);
    EXPECT_TRUE(column(file, "t", 0, whole).empty());
    EXPECT_TRUE(whole);
}

TEST(SqliteFile, ATableIsFoundByItsName) {
    std::string file = databaseOf("create table t(a, b); insert into t values (1, 1);");
    // The type, the name, and the name of the table that the entry belongs to.
    const std::size_t entry = file.find("tablett");
    ASSERT_NE(std::string::npos, entry);
    file.replace(entry, 7, "tableto");
    EXPECT_EQ(numbersTo(1), readThrough({file, {}}).numbers);
}

TEST(SqliteFile, AColumnThatARowLacksIsMissing) {
    const std::string file =
        databaseOf("create table t(v); insert into t values (1); alter table t add column w;");
    bool whole = false;
    const std::vector<Row> rows = column(file, "t", 1, whole);
    ASSERT_EQ(1U, rows.size());
    EXPECT_EQ(SqliteValue::Kind::Missing, rows[0].kind);
}

std::string sampleDatabase() {
    return databaseOf(
        "pragma page_size=512; create table t(id integer primary key, v);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 40) "
        "insert into t select i, zeroblob(30 * i) from n;");
}

TEST(SqliteFile, ATruncatedFileIsReportedAndGivesNoRowTwice) {
    const std::string file = sampleDatabase();
    for (std::size_t length = 0; length < file.size(); length += 61) {
        bool whole = true;
        const std::vector<Row> rows = column(file.substr(0, length), "t", 1, whole);
        EXPECT_FALSE(whole) << length;
        EXPECT_LE(rows.size(), 40U) << length;
    }
}

// Wrong page numbers, counts and lengths must cause neither reads out of bounds nor endless loops.
TEST(SqliteFile, DamagedBytesNeverPreventTheEnd) {
    const std::string file = sampleDatabase();
    for (std::size_t i = 0; i < file.size(); i += 3) {
        for (const char byte : {'\x00', '\x01', '\x05', '\x7f', '\xff'}) {
            std::string broken = file;
            broken[i] = byte;
            bool whole = false;
            EXPECT_LE(column(broken, "t", 1, whole).size(), 65535U);
        }
    }
}

// A database whose second page is a table leaf with this number of pointers to one cell.
std::string databaseOfOneCell(std::size_t pointers) {
    std::string file =
        databaseOf("pragma page_size=65536; create table t(v); insert into t values (zeroblob(32000));");
    std::string page = file.substr(65536, 65536);
    const std::string cell = page.substr(5, 2);  // the offset of the only cell
    page.replace(3, 2, number(pointers, 2));
    for (std::size_t i = 0; i < pointers; ++i) page.replace(8 + 2 * i, 2, page.substr(8, 2));
    EXPECT_EQ(page.substr(8, 2), cell);
    return file.replace(65536, 65536, page);
}

TEST(SqliteFile, OverlappingCellsGiveNoMoreBytesThanTheirPageHas) {
    for (const std::size_t pointers : {3U, 100U, 16000U}) {
        bool whole = true;
        std::size_t bytes = 0;
        for (const Row& row : column(databaseOfOneCell(pointers), "t", 0, whole)) bytes += row.bytes.size();
        EXPECT_FALSE(whole) << pointers;
        EXPECT_LE(bytes, 65536U) << pointers;
        EXPECT_GE(bytes, 32000U) << "what comes before is handed out";
    }
}

TEST(SqliteFile, APageThatIsReferencedTwiceIsReadOnce) {
    // All children of the only interior page become its first child.
    std::string file = databaseOf(
        "pragma page_size=512; create table t(id integer primary key, v);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 40) "
        "insert into t select i, zeroblob(300) from n;");
    bool whole = false;
    ASSERT_EQ(40U, column(file, "t", 1, whole).size());
    const std::size_t root = 512;
    ASSERT_EQ('\x05', file[root]);
    const auto cellAt = [&](std::size_t i) {
        const std::size_t at = root + 12 + 2 * i;
        return root + static_cast<unsigned char>(file[at]) * 256U + static_cast<unsigned char>(file[at + 1]);
    };
    const std::string first = file.substr(cellAt(0), 4);
    for (std::size_t i = 1; i < 10; ++i) file.replace(cellAt(i), 4, first);
    EXPECT_LE(column(file, "t", 1, whole).size(), 31U);
    EXPECT_FALSE(whole);
}

TEST(SqliteFile, ASparseFileThatClaimsATebibyteTakesNoMemoryForIt) {
    const std::string file = databaseOf("create table t(v); insert into t values (1);");
    std::size_t rows = 0;
    std::size_t asked = 0;
    const auto read = [&](std::uint64_t offset, std::span<char> bytes) {
        asked = std::max(asked, bytes.size());
        std::ranges::fill(bytes, '\0');
        if (offset < file.size()) file.copy(bytes.data(), bytes.size(), static_cast<std::size_t>(offset));
        return true;
    };
    const SqliteInput sparse{read, std::uint64_t{1} << 40};
    EXPECT_EQ(SqliteReading::Complete, readSqliteTable(sparse, {}, "t", [&](std::string_view) { ++rows; }));
    EXPECT_EQ(1U, rows);
    EXPECT_LE(asked, 65536U);
}

TEST(SqliteFile, TheBitsOfTheEncodingThatSqliteIgnoresAreIgnored) {
    std::string file = databaseOf("create table t(a, b); insert into t values (1, 1);");
    for (const auto& [encoding, readable] :
         {std::pair{0, true}, {1, true}, {0x25, true}, {2, false}, {3, false}}) {
        file[59] = static_cast<char>(encoding);
        EXPECT_EQ(readable ? numbersTo(1) : numbersTo(0), readThrough({file, {}}).numbers) << encoding;
    }
}

TEST(SqliteFile, TablesWithoutRowIdsAndTextsInUtf16AreRefused) {
    for (const char* const statements :
         {"create table t(a integer primary key, b) without rowid; insert into t values (1, 1);",
          "pragma encoding='UTF-16le'; create table t(a, b); insert into t values (1, 1);"}) {
        const Reading reading = readThrough({databaseOf(statements), {}});
        EXPECT_EQ(SqliteReading::Incomplete, reading.result) << statements;
        EXPECT_TRUE(reading.numbers.empty()) << statements;
    }
}

TEST(SqliteFile, InvalidHeadersAreRefused) {
    const std::string file =
        databaseOf("pragma page_size=512; create table t(a, b); insert into t values (1, 1);");
    ASSERT_EQ(numbersTo(1), readThrough({file, {}}).numbers);
    const struct {
        std::size_t at;
        std::string bytes;
    } kCases[] = {{0, "s"},           {15, "x"},          {16, number(256, 2)}, {16, number(600, 2)},
                  {16, number(0, 2)}, {20, number(33, 1)}};
    for (const auto& test : kCases) {
        std::string damaged = file;
        damaged.replace(test.at, test.bytes.size(), test.bytes);
        EXPECT_EQ(SqliteReading::Incomplete, readThrough({damaged, {}}).result) << test.at;
    }
}

TEST(SqliteFile, PagesBeyondFourGibibytesAreNotRead) {
    const std::string file = databaseOf(
        "pragma page_size=65536; create table t(a, b);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 3) "
        "insert into t select zeroblob(30000), i from n;");
    constexpr std::size_t kSize = 65536;
    ASSERT_EQ(4 * kSize, file.size());
    ASSERT_EQ('\x05', file[kSize]);
    for (const std::uint64_t last : {65536U, 65537U}) {
        std::string moved = file;
        moved.replace(kSize + 8, 4, number(last, 4));
        const std::size_t leaf = 3 * kSize;  // now at a page far behind
        const auto read = [&](std::uint64_t offset, std::span<char> bytes) {
            const bool isMoved = offset == (last - 1) * kSize;
            moved.copy(bytes.data(), bytes.size(), isMoved ? leaf : static_cast<std::size_t>(offset));
            return true;
        };
        const Reading reading = readThrough({read, std::uint64_t{1} << 40}, {});
        EXPECT_EQ(last == 65536 ? 3U : 2U, reading.numbers.size()) << last;
    }
}

TEST(SqliteFile, RecordsOfMoreThan32MebibytesAreNotRead) {
    const std::string file = databaseOf(
        "pragma page_size=65536; create table t(id integer primary key, v);"
        "insert into t(v) values (zeroblob(33554426)), (zeroblob(33554427)), (zeroblob(1));");
    bool whole = true;
    const std::vector<Row> rows = column(file, "t", 1, whole);
    EXPECT_FALSE(whole);
    ASSERT_EQ(2U, rows.size());
    EXPECT_EQ(33554426U, rows[0].bytes.size()) << "the record has six bytes more";
    EXPECT_EQ(1U, rows[1].bytes.size());
}

TEST(SqliteFile, BytesThatEachPageReservesAreNoContent) {
    for (const auto& [pageSize, reserved] : {std::pair{512, 5}, {512, 32}, {65536, 255}}) {
        const std::string file =
            databaseOf(".filectrl reserve_bytes " + std::to_string(reserved) +
                       "\npragma page_size=" + std::to_string(pageSize) +
                       "; vacuum; create table t(id integer primary key, v);"
                       "with recursive n(i) as (select 1 union all select i + 17 from n where i < 3000) "
                       "insert into t select i, zeroblob(i) from n;");
        ASSERT_EQ(static_cast<char>(reserved), file[20]);
        bool whole = false;
        const std::vector<Row> rows = column(file, "t", 1, whole);
        EXPECT_TRUE(whole) << pageSize;
        ASSERT_EQ(178U, rows.size()) << pageSize;
        for (std::size_t i = 0; i < rows.size(); ++i) ASSERT_EQ(1 + 17 * i, rows[i].bytes.size()) << pageSize;
    }
}

TEST(SqliteFile, PagesMayReserveAllBut480Bytes) {
    std::string file = databaseOf(
        ".filectrl reserve_bytes 32\npragma page_size=512; vacuum; create table other(x);"
        "create table t(a, b); insert into t values (1, 1), (2, 2);");
    EXPECT_EQ(numbersTo(2), readThrough({file, {}}).numbers);
    file[20] = 33;
    EXPECT_EQ(numbersTo(0), readThrough({file, {}}).numbers);
}

}  // namespace
}  // namespace toolkit
