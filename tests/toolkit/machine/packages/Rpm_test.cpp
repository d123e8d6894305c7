// The rpm database: SQLite files as the program sqlite3 writes them, and package headers.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "toolkit/machine/packages/RpmHeader.h"
#include "toolkit/machine/packages/SqliteFile.h"

namespace toolkit {
namespace {

// The bytes of a database in which sqlite3 carried out the statements.
std::string databaseOf(const std::string& statements) {
    char directory[] = "/tmp/quorvah_sqlite_XXXXXX";
    if (mkdtemp(directory) == nullptr) return {};
    const std::filesystem::path folder = directory;
    std::ofstream(folder / "script") << statements;
    const std::string command = "sqlite3 " + (folder / "db").string() + " < " + (folder / "script").string();
    EXPECT_EQ(0, std::system(command.c_str()));
    std::ostringstream bytes;
    bytes << std::ifstream(folder / "db", std::ios::binary).rdbuf();
    std::filesystem::remove_all(folder);
    return bytes.str();
}

struct Row {
    SqliteValue::Kind kind;
    std::int64_t number;
    std::string bytes;
};

std::vector<Row> column(const std::string& file, std::string_view table, unsigned index, bool& whole) {
    std::vector<Row> rows;
    const ReadBytes read = [&file](std::uint64_t offset, std::span<char> bytes) {
        if (offset > file.size() || bytes.size() > file.size() - offset) return false;
        std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
        return true;
    };
    whole = readSqliteTable(read, file.size(), table, [&](std::string_view record) {
        const SqliteValue value = sqliteColumn(record, index);
        rows.push_back({value.kind, value.number, std::string(value.bytes)});
    });
    return rows;
}

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

// Payload sizes around every border between page, local part and overflow chain, in small and large pages.
TEST(SqliteFile, PayloadsOfEverySizeAreWholeInEveryPageSize) {
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

TEST(SqliteFile, ACutOffFileIsReportedAndGivesNoRowTwice) {
    const std::string file = sampleDatabase();
    for (std::size_t length = 0; length < file.size(); length += 61) {
        bool whole = true;
        const std::vector<Row> rows = column(file.substr(0, length), "t", 1, whole);
        EXPECT_FALSE(whole) << length;
        EXPECT_LE(rows.size(), 40U) << length;
    }
}

// Page numbers, counts and lengths that lie must neither read outside nor run in circles.
TEST(SqliteFile, WrongBytesEndTheReading) {
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

std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

// A database whose second page is a leaf of a table with that many pointers to one cell.
std::string databaseOfOneCell(std::size_t pointers) {
    std::string file =
        databaseOf("pragma page_size=65536; create table t(v); insert into t values (zeroblob(32000));");
    std::string page = file.substr(65536, 65536);
    const std::string cell = page.substr(5, 2);  // where the only one begins
    page.replace(3, 2, number(pointers, 2));
    for (std::size_t i = 0; i < pointers; ++i) page.replace(8 + 2 * i, 2, page.substr(8, 2));
    EXPECT_EQ(page.substr(8, 2), cell);
    return file.replace(65536, 65536, page);
}

TEST(SqliteFile, CellsThatOverlapEndTheirPageBeforeItGivesMoreThanItHolds) {
    for (const std::size_t pointers : {3U, 100U, 16000U}) {
        bool whole = true;
        std::size_t bytes = 0;
        for (const Row& row : column(databaseOfOneCell(pointers), "t", 0, whole)) bytes += row.bytes.size();
        EXPECT_FALSE(whole) << pointers;
        EXPECT_LE(bytes, 65536U) << pointers;
        EXPECT_GE(bytes, 32000U) << "what comes before is handed out";
    }
}

TEST(SqliteFile, APageThatIsNamedTwiceIsReadOnce) {
    // The only interior page's children all become the first one.
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
    const ReadBytes read = [&](std::uint64_t offset, std::span<char> bytes) {
        asked = std::max(asked, bytes.size());
        std::ranges::fill(bytes, '\0');
        if (offset < file.size()) file.copy(bytes.data(), bytes.size(), static_cast<std::size_t>(offset));
        return true;
    };
    EXPECT_TRUE(readSqliteTable(read, std::uint64_t{1} << 40, "t", [&](std::string_view) { ++rows; }));
    EXPECT_EQ(1U, rows);
    EXPECT_LE(asked, 65536U);
}

struct Entry {
    unsigned tag;
    unsigned type;
    std::string data;
};

std::string header(const std::vector<Entry>& entries) {
    std::string index;
    std::string store;
    for (const Entry& entry : entries) {
        index += number(entry.tag, 4) + number(entry.type, 4) + number(store.size(), 4) + number(1, 4);
        store += entry.data;
    }
    return number(entries.size(), 4) + number(store.size(), 4) + index + store;
}

std::string text(const char* value) {
    return std::string(value) + '\0';
}

std::string bashHeader() {
    return header({{63, 7, std::string(16, '\x3e')},
                   {1000, 6, text("bash")},
                   {1001, 6, text("5.1.8")},
                   {1002, 6, text("6.el9")},
                   {1003, 4, number(2, 4)},
                   {1004, 9, text("The GNU shell") + text("Die Shell")},
                   {1008, 4, number(1700000000, 4)},
                   {1009, 4, number(7738634, 4)},
                   {1011, 6, text("Vendor")},
                   {1016, 9, text("System/Shells")},
                   {1022, 6, text("x86_64")},
                   {1044, 6, text("bash-5.1.8-6.el9.src.rpm")}});
}

TEST(RpmHeader, AHeaderGivesItsFields) {
    const std::string bytes = bashHeader();
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ("bash", package.name);
    EXPECT_EQ("5.1.8", package.version);
    EXPECT_EQ("6.el9", package.release);
    EXPECT_TRUE(package.hasEpoch);
    EXPECT_EQ(2U, package.epoch);
    EXPECT_EQ("The GNU shell", package.summary);
    EXPECT_EQ(1700000000U, package.installTime);
    EXPECT_EQ(7738634U, package.size);
    EXPECT_EQ("Vendor", package.vendor);
    EXPECT_EQ("System/Shells", package.group);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("bash-5.1.8-6.el9.src.rpm", package.sourceRpm);
}

TEST(RpmHeader, ALargePackageHasItsSizeInTheWideTag) {
    const std::string bytes = header({{1000, 6, text("a")}, {5009, 5, number(5'000'000'000, 8)}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ(5'000'000'000U, package.size);
    EXPECT_FALSE(package.hasEpoch);
}

TEST(RpmHeader, ValuesOfTheWrongTypeAreLeftOut) {
    const std::string bytes =
        header({{1000, 6, text("a")}, {1001, 4, text("1234")}, {1009, 6, text("1234")}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ("", package.version);
    EXPECT_EQ(0U, package.size);
}

TEST(RpmHeader, ATextWithoutAnEndIsNotLookedForThroughoutTheHeader) {
    std::vector<Entry> entries{{1000, 6, text("a")}};
    for (int i = 0; i < 60'000; ++i) entries.push_back({1004, 6, "A"});
    entries.push_back({1001, 6, std::string(8 << 20, 'A')});
    const std::string whole = header(entries);
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(whole, package));
    EXPECT_EQ("a", package.name);
    EXPECT_EQ("", package.summary);
    EXPECT_EQ("", package.version);
}

TEST(RpmHeader, HeadersThatAreBrokenOrNamelessAreRefused) {
    RpmPackage package;
    EXPECT_FALSE(readRpmHeader("", package));
    EXPECT_FALSE(readRpmHeader(header({}), package));
    EXPECT_FALSE(readRpmHeader(header({{1001, 6, text("1")}}), package));
    EXPECT_FALSE(readRpmHeader(header({{1000, 6, "no end"}}), package));
    EXPECT_FALSE(readRpmHeader(std::string(64, '\xff'), package));
    const std::string whole = bashHeader();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(readRpmHeader(whole.substr(0, length), package)) << length;
    }
}

TEST(RpmHeader, TheSourcePackageIsNamedBeforeVersionAndRelease) {
    EXPECT_EQ("bash", nameOfSourceRpm("bash-5.1.8-6.el9.src.rpm"));
    EXPECT_EQ("python3-x", nameOfSourceRpm("python3-x-1-2.src.rpm"));
    for (const char* const name : {"", "-", "bash", "bash-1", "-1"})
        EXPECT_EQ("", nameOfSourceRpm(name)) << name;
}

}  // namespace
}  // namespace toolkit
