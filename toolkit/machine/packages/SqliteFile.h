#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "toolkit/machine/packages/SqliteLog.h"

namespace toolkit {

// A column's value. An integer is in `number`; the bytes of a text or blob are in `bytes`.
struct SqliteValue {
    enum class Kind { Missing, Null, Integer, Real, Text, Blob };
    Kind kind = Kind::Missing;
    std::int64_t number = 0;
    std::string_view bytes;
};

// The value of one column of a row. Columns are counted from 0. Missing when the row has no such column or is damaged.
SqliteValue sqliteColumn(std::string_view record, unsigned column);

enum class SqliteReading : std::uint8_t {
    Complete,
    LogIgnored,  // the log is damaged, unreadable or was overwritten meanwhile; the rows may be older than it is
    Incomplete,  // there is no such table, or a part of it could not be read; all other rows were handed out
};

// Reads a whole table of an SQLite 3 database: calls `row` for the record of every row, in the order of the row ids; the
// record is valid during the call only. `log` is the write-ahead log beside the database file, of size 0 where there is
// none. No byte of the files is used for two records, so together they are no longer than the files.
//
// Not read are tables WITHOUT ROWID, databases with texts in UTF-16, records of more than 32 MiB and what lies beyond the
// first 4 GiB of the database.
SqliteReading readSqliteTable(const SqliteInput& database, const SqliteInput& log, std::string_view table,
                              const std::function<void(std::string_view record)>& row);

}  // namespace toolkit
