#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/toolkit/machine/packages/SqliteDatabases.h"

namespace toolkit {
namespace {

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
    for (std::size_t length = 32; length <= files.log.size(); length += 63) {
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

TEST(SqliteLog, FramesBehindOneOfAnEarlierLogAreNotRead) {
    Files files = filesWithLog();
    std::string frame = files.log.substr(32 + 2 * kFrame, kFrame);
    frame.replace(8, 8, "earlier!");
    files.log.insert(32 + 2 * kFrame, frame);
    EXPECT_EQ(numbersTo(12), readThrough(files).numbers);
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

// All pages of the database are in its log.
Files filesWithWholeLog() {
    return filesOf(
        "pragma page_size=512; pragma journal_mode=wal; pragma wal_autocheckpoint=0;"
        "create table t(a, b); insert into t values (1, 1);");
}

TEST(SqliteLog, TheHeaderInTheLogTakesThePlaceOfTheOneInTheFile) {
    Files files = filesWithWholeLog();
    files.database.assign(1, 'x');
    const Reading reading = readThrough(files);
    EXPECT_EQ(SqliteReading::Complete, reading.result);
    EXPECT_EQ(numbersTo(1), reading.numbers);
}

TEST(SqliteLog, ALogBesideAnEmptyFileGivesNothing) {
    const Reading reading = readThrough({{}, filesWithWholeLog().log});
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

}  // namespace
}  // namespace toolkit
