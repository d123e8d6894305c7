// The reader of SQLite databases against libsqlite3. The input builds a database with libsqlite3, then may damage its
// files. Every row that libsqlite3 reads from a sound database must be read alike; a damaged one may be refused, but not
// read differently.
#include <fuzzer/FuzzedDataProvider.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/SqliteDatabases.h"
#include "toolkit/machine/packages/SqliteFile.h"

namespace {

using namespace zavfuzz;

using Record = std::vector<std::pair<SqliteValue::Kind, std::string>>;

struct Rows {
    bool readable = false;
    bool sound = false;
    std::string definition;  // of the table
    std::size_t columns = 0;
    std::vector<Record> rows;
};

std::string textOf(sqlite3_stmt* statement, int column) {
    const void* const bytes = sqlite3_column_blob(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

std::pair<SqliteValue::Kind, std::string> valueOf(sqlite3_stmt* statement, int column) {
    using Kind = SqliteValue::Kind;
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            return {Kind::Integer, std::to_string(sqlite3_column_int64(statement, column))};
        case SQLITE_FLOAT:
            return {Kind::Real, {}};
        case SQLITE_TEXT:
            return {Kind::Text, textOf(statement, column)};
        case SQLITE_BLOB:
            return {Kind::Blob, textOf(statement, column)};
        default:
            return {Kind::Null, {}};
    }
}

// The only value of the only row; empty where there is another number of rows.
std::string single(sqlite3* connection, const std::string& sql) {
    const Statement statement = prepare(connection, sql);
    if (statement == nullptr || sqlite3_step(statement.get()) != SQLITE_ROW) return {};
    std::string text = textOf(statement.get(), 0);
    return sqlite3_step(statement.get()) == SQLITE_DONE ? text : std::string();
}

Rows readByLibrary(const fs::path& path) {
    const Connection connection = openDatabase(path);
    // A damaged tree may have more ways than anybody has time for.
    int patience = 50;
    sqlite3_progress_handler(
        connection.get(), 10'000, [](void* left) { return static_cast<int>(--*static_cast<int*>(left) < 0); },
        &patience);
    Rows result;
    result.definition = single(
        connection.get(),
        "select sql from sqlite_schema where 't' in (name, tbl_name) and type='table' and name=tbl_name and "
        "typeof(rootpage)='integer'");
    if (single(connection.get(), "select count(*) from sqlite_schema where sql like 'create table t(%'") !=
        "1")
        result.definition.clear();
    const Statement statement = prepare(connection.get(), "select * from t not indexed");
    if (statement == nullptr) return result;
    result.columns = static_cast<std::size_t>(sqlite3_column_count(statement.get()));
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(statement.get())) == SQLITE_ROW) {
        Record record;
        for (int i = 0; i < sqlite3_column_count(statement.get()); ++i)
            record.push_back(valueOf(statement.get(), i));
        result.rows.push_back(std::move(record));
    }
    result.readable = code == SQLITE_DONE;
    result.sound = result.readable && single(connection.get(), "pragma integrity_check") == "ok";
    return result;
}

struct OwnRows {
    SqliteReading reading{};
    std::vector<Record> rows;
};

SqliteInput inputOf(const std::string& bytes, std::size_t& bytesRead) {
    return {[&](std::uint64_t offset, std::span<char> target) {
                bytesRead += target.size();
                if (offset > bytes.size() || target.size() > bytes.size() - offset) return false;
                bytes.copy(target.data(), target.size(), static_cast<std::size_t>(offset));
                return true;
            },
            bytes.size()};
}

OwnRows readByOurselves(const Files& files, std::size_t columns) {
    OwnRows result;
    std::size_t bytesRead = 0;
    std::size_t bytesGiven = 0;
    const auto add = [&](std::string_view bytes) {
        bytesGiven += bytes.size();
        Record record;
        for (unsigned i = 0; i < columns; ++i) {
            const SqliteValue value = toolkit::sqliteColumn(bytes, i);
            const bool isInteger = value.kind == SqliteValue::Kind::Integer;
            record.emplace_back(value.kind,
                                isInteger ? std::to_string(value.number) : std::string(value.bytes));
        }
        result.rows.push_back(std::move(record));
    };
    result.reading =
        toolkit::readSqliteTable(inputOf(files.database, bytesRead), inputOf(files.log, bytesRead), "t", add);
    // Each page at most once for the schema and once for the table, and the log once more for its checksums.
    const std::size_t size = files.database.size() + files.log.size();
    must(bytesRead <= 3 * size + std::size_t{3} * 65536);
    must(bytesGiven <= size);
    return result;
}

// A column that a row lacks is null. So is a number that is none, and the id of a row is not in its record.
bool sameValue(const Record::value_type& own, const Record::value_type& library, bool isId) {
    using Kind = SqliteValue::Kind;
    if (isId) return library.first == Kind::Integer;
    if (own.first == Kind::Missing) return library.first == Kind::Null;
    if (own.first == Kind::Real && library.first == Kind::Null) return true;
    return own == library;
}

void compare(const std::vector<Record>& own, const Rows& library) {
    must(own.size() == library.rows.size());
    const bool hasId = library.definition.find("integer primary key") != std::string::npos;
    for (std::size_t row = 0; row < own.size(); ++row) {
        for (std::size_t column = 0; column < library.columns; ++column)
            must(sameValue(own[row][column], library.rows[row][column], hasId && column == 0));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const Folder folder;
    Files files;
    bool isUtf8 = false;
    {
        const Connection connection = openDatabase(folder.path("made"));
        Maker(input, connection.get()).make();
        files = Files::readFrom(folder.path("made"));
        isUtf8 = single(connection.get(), "pragma encoding") == "UTF-8";
    }
    files.write(folder.path("whole"));
    const Rows whole = readByLibrary(folder.path("whole"));
    const bool isSupported = isUtf8 && whole.definition.find("without rowid") == std::string::npos;
    const OwnRows own = readByOurselves(files, whole.columns);
    if (whole.sound && isSupported) {
        must(own.reading == SqliteReading::Complete);
        compare(own.rows, whole);
    } else if (!isSupported) {
        must(own.reading == SqliteReading::Incomplete && own.rows.empty());
    }

    if (input.remaining_bytes() == 0) return 0;
    const std::size_t logSize = files.log.size();
    damage(input, files);
    files.write(folder.path("damaged"));
    const Rows library = readByLibrary(folder.path("damaged"));
    const OwnRows damaged = readByOurselves(files, library.columns);
    const bool comparable = library.readable && isSupported && library.definition == whole.definition;
    if (!comparable) return 0;
    if (damaged.reading == SqliteReading::Complete) compare(damaged.rows, library);
    const bool wholePages = files.database.size() % pageSizeOf(files) == 0;
    if (library.sound && wholePages && logSize == 0) must(damaged.reading == SqliteReading::Complete);
    return 0;
}
