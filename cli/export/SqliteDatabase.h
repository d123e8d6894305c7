// A SQLite database in memory, which is read from a file and written to one as a whole. All functions throw Failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace zavcli {

class SqliteDatabase {
  public:
    // SQLite's own limit for databases in memory.
    static constexpr std::size_t kMaxSize = std::size_t{1} << 30;

    // Reads the file; the database is empty if there is none. `path` also names the file in messages.
    explicit SqliteDatabase(std::string path);
    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    // Executes statements without a result.
    void execute(const std::string& sql);
    // The first value of the result; 0 if there is none.
    std::int64_t number(const std::string& sql);

    // The content for a file.
    std::string content() const;

    [[noreturn]] void fail() const;

  private:
    friend class SqliteStatement;

    void load(const std::string& file);

    std::string path_;
    sqlite3* database_ = nullptr;
};

// A statement that is executed again and again with other values. Parameters are numbered from 1.
class SqliteStatement {
  public:
    SqliteStatement(SqliteDatabase& database, const std::string& sql);

    void bind(int parameter, std::string_view text);
    void bind(int parameter, std::int64_t number);
    void bind(int parameter, double number);
    void bindNull(int parameter);

    // Executes the statement up to the next row. Whether there is one.
    bool next();
    // Values of the row.
    std::string text(int column) const;
    std::int64_t number(int column) const;

    // Executes the statement, which has no result, and forgets its values.
    void execute();

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    void check(int code) const;

    SqliteDatabase& database_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

}  // namespace zavcli
