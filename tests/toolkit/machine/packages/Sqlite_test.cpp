// SQLite databases as the program sqlite3 writes them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/packages/SqliteFile.h"

namespace toolkit {
namespace {

// The content of a database file and of the write-ahead log beside it.
struct Files {
    std::string database;
    std::string log;
};

// The files after sqlite3 executed the statements. The log is not checkpointed at the end.
Files filesOf(const std::string& statements) {
    const zavtest::ScratchDir folder;
    const std::string script =
        folder.write("script", ".dbconfig no_ckpt_on_close on\n" + statements).string();
    const std::string database = (folder.path() / "db").string();
    EXPECT_EQ(0, std::system(("sqlite3 " + database + " < " + script + " > " + script + ".out").c_str()));
    return {zavtest::readAll(database), zavtest::readAll(database + "-wal")};
}

std::string databaseOf(const std::string& statements) {
    return filesOf(statements).database;
}

struct Row {
    SqliteValue::Kind kind;
    std::int64_t number;
    std::string bytes;
};

SqliteInput inputOf(const std::string& file) {
    const auto read = [&file](std::uint64_t offset, std::span<char> bytes) {
        if (offset > file.size() || bytes.size() > file.size() - offset) return false;
        std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
        return true;
    };
    return {read, file.size()};
}

std::vector<Row> column(const std::string& file, std::string_view table, unsigned index, bool& whole) {
    std::vector<Row> rows;
    const auto add = [&](std::string_view record) {
        const SqliteValue value = sqliteColumn(record, index);
        rows.push_back({value.kind, value.number, std::string(value.bytes)});
    };
    whole = readSqliteTable(inputOf(file), {}, table, add) == SqliteReading::Complete;
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

std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
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

// ---- write-ahead logs

constexpr std::size_t kPage = 512;
constexpr std::size_t kFrame = 24 + kPage;

// A table of ten rows in the database file, and five transactions in the log. Each adds a row to the same page.
Files filesWithLog() {
    return filesOf(
        "pragma page_size=512; pragma journal_mode=wal; create table t(id integer primary key, v);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 10) insert into t select "
        "i, i from n;"
        "pragma wal_checkpoint(truncate); pragma wal_autocheckpoint=0;"
        "insert into t values (11, 11); insert into t values (12, 12); insert into t values (13, 13);"
        "insert into t values (14, 14); insert into t values (15, 15);");
}

struct Reading {
    SqliteReading result;
    std::vector<std::int64_t> numbers;  // values of the second column
};

Reading readThrough(const SqliteInput& database, const SqliteInput& log) {
    Reading reading{};
    const auto add = [&](std::string_view record) {
        reading.numbers.push_back(sqliteColumn(record, 1).number);
    };
    reading.result = readSqliteTable(database, log, "t", add);
    return reading;
}

Reading readThrough(const Files& files) {
    return readThrough(inputOf(files.database), inputOf(files.log));
}

std::vector<std::int64_t> numbersTo(std::size_t last) {
    std::vector<std::int64_t> numbers;
    for (std::size_t i = 1; i <= last; ++i) numbers.push_back(static_cast<std::int64_t>(i));
    return numbers;
}

// Gives a log the checksums of its content.
void seal(std::string& log, std::size_t frameSize = kFrame) {
    std::uint32_t sum[2] = {};
    const auto add = [&](std::size_t begin, std::size_t size) {
        for (std::size_t i = 0; i < size; i += 4) {
            std::uint32_t word = 0;
            for (std::size_t byte = 0; byte < 4; ++byte) {
                const std::size_t shift = 8 * ((log[3] & 1) != 0 ? 3 - byte : byte);
                word |= std::uint32_t{static_cast<unsigned char>(log[begin + i + byte])} << shift;
            }
            sum[i / 4 % 2] += word + sum[1 - i / 4 % 2];
        }
    };
    add(0, 24);
    log.replace(24, 8, number(sum[0], 4) + number(sum[1], 4));
    for (std::size_t at = 32; at + frameSize <= log.size(); at += frameSize) {
        add(at, 8);
        add(at + 24, frameSize - 24);
        log.replace(at + 16, 8, number(sum[0], 4) + number(sum[1], 4));
    }
}

TEST(SqliteLog, PagesInTheLogTakeThePlaceOfThoseInTheFile) {
    const Files files = filesWithLog();
    ASSERT_EQ(32 + 5 * kFrame, files.log.size());
    const Reading withoutLog = readThrough({files.database, {}});
    EXPECT_EQ(SqliteReading::Complete, withoutLog.result);
    EXPECT_EQ(numbersTo(10), withoutLog.numbers);
    const Reading reading = readThrough(files);
    EXPECT_EQ(SqliteReading::Complete, reading.result);
    EXPECT_EQ(numbersTo(15), reading.numbers);
}

TEST(SqliteLog, ADatabaseThatWasRebuiltInTheLogIsReadCompletely) {
    for (const int pageSize : {512, 1024, 65536}) {
        const Files files = filesOf(
            "pragma page_size=" + std::to_string(pageSize) +
            "; pragma journal_mode=wal; create table big(x); create table t(id integer primary key, v, w);"
            "insert into big values (zeroblob(200000)); pragma wal_checkpoint(truncate);"
            "pragma wal_autocheckpoint=0;"
            "with recursive n(i) as (select 1 union all select i + 1 from n where i < 100) "
            "insert into t select i, i, zeroblob(40 * i) from n;"
            "drop table big; vacuum; alter table t add column x; delete from t where id > 90;");
        const Reading reading = readThrough(files);
        EXPECT_EQ(SqliteReading::Complete, reading.result) << pageSize;
        EXPECT_EQ(numbersTo(90), reading.numbers) << pageSize;
    }
}

TEST(SqliteLog, AnInterruptedTransactionIsNotSeen) {
    const Files files = filesWithLog();
    for (std::size_t length = 32; length <= files.log.size(); length += 67) {
        const Reading reading = readThrough({files.database, files.log.substr(0, length)});
        EXPECT_EQ(SqliteReading::Complete, reading.result) << length;
        EXPECT_EQ(numbersTo(10 + (length - 32) / kFrame), reading.numbers) << length;
    }
    std::string log = files.log;
    log.replace(32 + 4 * kFrame + 4, 4, number(0, 4));  // the last frame commits no more
    seal(log);
    EXPECT_EQ(numbersTo(14), readThrough({files.database, log}).numbers);
}

TEST(SqliteLog, ADamagedFrameEndsTheLog) {
    const Files files = filesWithLog();
    for (std::size_t at = 32; at < files.log.size(); ++at) {
        std::string log = files.log;
        log[at] = static_cast<char>(log[at] ^ 0x40);
        const Reading reading = readThrough({files.database, log});
        ASSERT_EQ(SqliteReading::Complete, reading.result) << at;
        ASSERT_EQ(numbersTo(10 + (at - 32) / kFrame), reading.numbers) << at;
    }
}

TEST(SqliteLog, FramesOfAnEarlierLogAreNotRead) {
    Files files = filesWithLog();
    files.log.replace(32 + 3 * kFrame + 8, 8, "earlier!");
    seal(files.log);
    EXPECT_EQ(numbersTo(13), readThrough(files).numbers);
    files.log.replace(32 + 2 * kFrame, 4, number(0, 4));
    seal(files.log);
    EXPECT_EQ(numbersTo(12), readThrough(files).numbers) << "no page has the number 0";
}

TEST(SqliteLog, ChecksumsOfEitherByteOrderAreUnderstood) {
    Files files = filesWithLog();
    files.log[3] = static_cast<char>(files.log[3] ^ 1);
    EXPECT_EQ(SqliteReading::LogIgnored, readThrough(files).result);
    seal(files.log);
    const Reading reading = readThrough(files);
    EXPECT_EQ(SqliteReading::Complete, reading.result);
    EXPECT_EQ(numbersTo(15), reading.numbers);
}

TEST(SqliteLog, ALogWithADamagedHeaderIsIgnoredAndReported) {
    const Files files = filesWithLog();
    for (std::size_t at = 0; at < 32; ++at) {
        std::string log = files.log;
        log[at] = static_cast<char>(log[at] ^ 0x10);
        const Reading reading = readThrough({files.database, log});
        EXPECT_EQ(SqliteReading::LogIgnored, reading.result) << at;
        EXPECT_EQ(numbersTo(10), reading.numbers) << at;
    }
    for (const std::size_t length : {1U, 31U})
        EXPECT_EQ(SqliteReading::LogIgnored,
                  readThrough({files.database, files.log.substr(0, length)}).result)
            << length;
}

TEST(SqliteLog, UnknownVersionsAndPageSizesAreRefused) {
    const Files files = filesWithLog();
    const struct {
        std::size_t at;
        std::uint64_t value;
    } kCases[] = {{4, 3'007'001}, {8, 256}, {8, 513}, {8, 1536}, {8, 131072}, {8, 0}};
    for (const auto& test : kCases) {
        std::string log = files.log;
        log.replace(test.at, 4, number(test.value, 4));
        seal(log);
        EXPECT_EQ(SqliteReading::LogIgnored, readThrough({files.database, log}).result) << test.value;
    }
}

TEST(SqliteLog, ALogWithAnotherPageSizeIsRefused) {
    Files files = filesWithLog();
    files.log.replace(8, 4, number(1024, 4));
    files.log.resize(32 + 2 * (24 + 1024));
    files.log.replace(32 + 24 + 1024 + 8, 8, files.log.substr(16, 8));
    seal(files.log, 24 + 1024);
    const Reading reading = readThrough(files);
    EXPECT_EQ(SqliteReading::Incomplete, reading.result);
    EXPECT_TRUE(reading.numbers.empty());
}

TEST(SqliteLog, ALogBesideAnEmptyFileGivesNothing) {
    const Reading reading = readThrough({{}, filesWithLog().log});
    EXPECT_EQ(SqliteReading::Incomplete, reading.result);
    EXPECT_TRUE(reading.numbers.empty());
}

TEST(SqliteLog, ALogThatClaimsBillionsOfPagesTakesNoMemoryForThem) {
    Files files = filesWithLog();
    files.log.replace(32 + 3 * kFrame, 4, number(0xFFFFFFFF, 4));
    files.log.replace(32 + 4 * kFrame + 4, 4, number(0xFFFFFFFF, 4));
    seal(files.log);
    const Reading reading = readThrough(files);
    EXPECT_EQ(SqliteReading::Complete, reading.result);
    EXPECT_EQ(numbersTo(15), reading.numbers);
}

TEST(SqliteLog, PagesBeyondTheEndOfTheDatabaseAreNotRead) {
    Files files = filesWithLog();
    files.log.replace(32 + 4 * kFrame + 4, 4, number(1, 4));  // the table is in page 2
    seal(files.log);
    const Reading reading = readThrough(files);
    EXPECT_EQ(SqliteReading::Incomplete, reading.result);
    EXPECT_TRUE(reading.numbers.empty());
}

TEST(SqliteLog, ALogThatIsRestartedMeanwhileIsReported) {
    const Files files = filesWithLog();
    int readings = 0;
    const SqliteInput whole = inputOf(files.log);
    const SqliteInput log{[&](std::uint64_t offset, std::span<char> bytes) {
                              const bool read = whole.read(offset, bytes);
                              if (offset < 32 && readings++ > 0) std::ranges::fill(bytes, 'x');
                              return read;
                          },
                          whole.size};
    const Reading reading = readThrough(inputOf(files.database), log);
    EXPECT_EQ(SqliteReading::LogIgnored, reading.result);
    EXPECT_EQ(numbersTo(15), reading.numbers);
}

TEST(SqliteLog, AnUnreadableLogIsIgnoredCompletely) {
    const Files files = filesWithLog();
    const SqliteInput whole = inputOf(files.log);
    for (std::uint64_t unreadable = 0; unreadable < files.log.size(); unreadable += kPage) {
        const SqliteInput log{[&](std::uint64_t offset, std::span<char> bytes) {
                                  const bool hit = offset <= unreadable && unreadable - offset < bytes.size();
                                  return !hit && whole.read(offset, bytes);
                              },
                              whole.size};
        const Reading reading = readThrough(inputOf(files.database), log);
        EXPECT_EQ(SqliteReading::LogIgnored, reading.result) << unreadable;
        EXPECT_EQ(numbersTo(10), reading.numbers) << unreadable;
    }
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

}  // namespace
}  // namespace toolkit
