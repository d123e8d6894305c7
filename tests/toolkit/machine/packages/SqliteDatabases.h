// SQLite databases as the program sqlite3 writes them, and what the reader makes of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/packages/SqliteFile.h"

namespace toolkit {

// The content of a database file and of the write-ahead log beside it.
struct Files {
    std::string database;
    std::string log;
};

// The files after sqlite3 executed the statements. The log is not checkpointed at the end.
inline Files filesOf(const std::string& statements) {
    const zavtest::ScratchDir folder;
    const std::string script =
        folder.write("script", ".dbconfig no_ckpt_on_close on\n" + statements).string();
    const std::string database = (folder.path() / "db").string();
    EXPECT_EQ(0, std::system(("sqlite3 " + database + " < " + script + " > " + script + ".out").c_str()));
    return {zavtest::readAll(database), zavtest::readAll(database + "-wal")};
}

inline std::string databaseOf(const std::string& statements) {
    return filesOf(statements).database;
}

struct Row {
    SqliteValue::Kind kind;
    std::int64_t number;
    std::string bytes;
};

inline SqliteInput inputOf(const std::string& file) {
    const auto read = [&file](std::uint64_t offset, std::span<char> bytes) {
        if (offset > file.size() || bytes.size() > file.size() - offset) return false;
        std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
        return true;
    };
    return {read, file.size()};
}

inline std::vector<Row> column(const std::string& file, std::string_view table, unsigned index, bool& whole) {
    std::vector<Row> rows;
    const auto add = [&](std::string_view record) {
        const SqliteValue value = sqliteColumn(record, index);
        rows.push_back({value.kind, value.number, std::string(value.bytes)});
    };
    whole = readSqliteTable(inputOf(file), {}, table, add) == SqliteReading::Complete;
    return rows;
}

inline std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

struct Reading {
    SqliteReading result;
    std::vector<std::int64_t> numbers;  // values of the second column
};

inline Reading readThrough(const SqliteInput& database, const SqliteInput& log) {
    Reading reading{};
    const auto add = [&](std::string_view record) {
        reading.numbers.push_back(sqliteColumn(record, 1).number);
    };
    reading.result = readSqliteTable(database, log, "t", add);
    return reading;
}

inline Reading readThrough(const Files& files) {
    return readThrough(inputOf(files.database), inputOf(files.log));
}

inline std::vector<std::int64_t> numbersTo(std::size_t last) {
    std::vector<std::int64_t> numbers;
    for (std::size_t i = 1; i <= last; ++i) numbers.push_back(static_cast<std::int64_t>(i));
    return numbers;
}

}  // namespace toolkit
