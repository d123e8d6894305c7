#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace toolkit {

// A column's value. An integer is in `number`; the bytes of a text or blob are in `bytes`.
struct SqliteValue {
    enum class Kind { Missing, Null, Integer, Real, Text, Blob };
    Kind kind = Kind::Missing;
    std::int64_t number = 0;
    std::string_view bytes;
};

// The value of one column (0 is the first) of a row; Missing when the row has no such column or is broken.
SqliteValue sqliteColumn(std::string_view record, unsigned column);

// Gives all of these bytes of a file; false when it has not that many or they may not be read.
using ReadBytes = std::function<bool(std::uint64_t offset, std::span<char> bytes)>;

// Reads a whole table of an SQLite 3 database file of this size: calls `row` for the record of every row, in the order
// of the row ids; the record is valid during the call only. What stands in a write-ahead log beside the file is
// not seen. No byte of the file is used for two records, so together they are no longer than the file. False when there
// is no such table, or when a part of it could not be read; all other rows were handed out.
bool readSqliteTable(const ReadBytes& read, std::uint64_t size, std::string_view table,
                     const std::function<void(std::string_view record)>& row);

}  // namespace toolkit
