// The databases that fuzz_sqlite reads: libsqlite3 makes them as the input says, and then their files may be damaged.
#pragma once

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

#include "toolkit/machine/packages/SqliteFile.h"

namespace zavfuzz {

namespace fs = std::filesystem;
using toolkit::SqliteInput;
using toolkit::SqliteReading;
using toolkit::SqliteValue;

inline void must(bool holds, int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "line %d does not hold\n", line);
    std::abort();
}

// Where libsqlite3 keeps the files of one input.
class Folder {
  public:
    Folder() {
        std::error_code none;
        std::string name =
            fs::is_directory("/dev/shm", none) ? "/dev/shm/fuzz_sqlite_XXXXXX" : "/tmp/fuzz_sqlite_XXXXXX";
        must(::mkdtemp(name.data()) != nullptr);
        path_ = name;
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    fs::path path(const std::string& name) const { return path_ / name; }

  private:
    fs::path path_;
};

// The content of a database file and of the write-ahead log beside it.
struct Files {
    std::string database;
    std::string log;

    static std::string read(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static Files readFrom(const fs::path& path) { return {read(path), read(path.string() + "-wal")}; }

    void write(const fs::path& path) const {
        std::ofstream(path, std::ios::binary) << database;
        if (!log.empty()) std::ofstream(path.string() + "-wal", std::ios::binary) << log;
    }
};

struct Closer {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Connection = std::unique_ptr<sqlite3, Closer>;
using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

inline Connection openDatabase(const fs::path& path) {
    sqlite3* connection = nullptr;
    must(sqlite3_open(path.c_str(), &connection) == SQLITE_OK);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_exec(connection, "pragma locking_mode=exclusive; pragma synchronous=off", nullptr, nullptr,
                 nullptr);
    return Connection(connection);
}

inline Statement prepare(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
    return Statement(statement);
}

class Maker {
  public:
    Maker(FuzzedDataProvider& input, sqlite3* connection) : input_(input), connection_(connection) {}

    void make() {
        int reserved = input_.ConsumeIntegralInRange(0, 3) == 0 ? input_.ConsumeIntegralInRange(0, 255) : 0;
        sqlite3_file_control(connection_, nullptr, SQLITE_FCNTL_RESERVE_BYTES, &reserved);
        const int pageSize = 512 << input_.ConsumeIntegralInRange(0, 7);
        run("pragma page_size=" + std::to_string(pageSize));
        run("pragma auto_vacuum=" + std::to_string(input_.ConsumeIntegralInRange(0, 2)));
        constexpr const char* kEncodings[] = {"UTF-8", "UTF-8", "UTF-8", "UTF-16le"};
        run(std::string("pragma encoding='") + input_.PickValueInArray(kEncodings) + "'");
        if (input_.ConsumeBool()) run("pragma journal_mode=wal");
        run("pragma wal_autocheckpoint=" + std::to_string(input_.ConsumeIntegralInRange(0, 50)));
        run("pragma max_page_count=" + std::to_string(20 + (1 << 21) / pageSize));
        makeTable();
        while (input_.remaining_bytes() > 16 && steps_++ < 100 && input_.ConsumeIntegralInRange(0, 15) != 15)
            step();
        // With this the log may end in frames of a transaction that was not committed.
        if (input_.ConsumeBool()) run("pragma cache_spill=1; pragma cache_size=1; begin");
        for (int i = input_.ConsumeIntegralInRange(0, 3); i > 0; --i) insert();
    }

  private:
    void run(const std::string& sql) { sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr); }

    void makeTable() {
        const bool hasId = input_.ConsumeBool();
        columns_ = input_.ConsumeIntegralInRange(1, 5);
        std::string sql = "create table t(";
        for (int i = 0; i < columns_; ++i) {
            sql += (i == 0 ? "c" : ",c") + std::to_string(i);
            if (i == 0 && hasId) sql += " integer primary key";
        }
        const bool withoutRowId = hasId && input_.ConsumeIntegralInRange(0, 15) == 0;
        run(sql + (withoutRowId ? ") without rowid" : ")"));
    }

    void step() {
        switch (input_.ConsumeIntegralInRange(0, 15)) {
            case 0:
                run("begin");
                break;
            case 1:
                run("commit");
                break;
            case 2:
                run("rollback");
                break;
            case 3:
                run("delete from t where rowid % 7 = " + std::to_string(input_.ConsumeIntegralInRange(0, 6)));
                break;
            case 4:
                run("update t set c" + std::to_string(columns_ - 1) + "=zeroblob(" + smallNumber() +
                    ") where rowid % 5 = 1");
                break;
            case 5:
                run("create table u" + smallNumber() + "(x); create index i" + smallNumber() + " on t(c0)");
                break;
            case 6:
                run("drop table u" + smallNumber());
                break;
            case 7:
                run("vacuum; pragma incremental_vacuum");
                break;
            case 8:
                run("pragma wal_checkpoint(restart)");
                break;
            case 9:
                run("pragma wal_checkpoint(truncate)");
                break;
            case 10:
                run("alter table t add column d" + smallNumber());
                break;
            case 11:
                run("insert into t select * from t limit 20");
                break;
            default:
                insert();
        }
    }

    std::string smallNumber() { return std::to_string(input_.ConsumeIntegral<std::uint16_t>()); }

    void insert() {
        std::string sql = "insert into t values(";
        for (int i = 0; i < columns_; ++i) sql += i == 0 ? "?" : ",?";
        const Statement statement = prepare(connection_, sql + ")");
        if (statement == nullptr) return;
        for (int i = 1; i <= columns_; ++i) bind(statement.get(), i);
        sqlite3_step(statement.get());
    }

    void bind(sqlite3_stmt* statement, int parameter) {
        switch (input_.ConsumeIntegralInRange(0, 6)) {
            case 0:
                break;
            case 1:
                sqlite3_bind_int64(
                    statement, parameter,
                    input_.ConsumeIntegral<std::int64_t>() >> input_.ConsumeIntegralInRange(0, 63));
                break;
            case 2:
                sqlite3_bind_double(statement, parameter, input_.ConsumeFloatingPoint<double>());
                break;
            case 3:
                sqlite3_bind_zeroblob(statement, parameter, input_.ConsumeIntegralInRange(0, 20'000));
                break;
            case 4: {
                const std::string blob = input_.ConsumeRandomLengthString(40);
                sqlite3_bind_blob(statement, parameter, blob.data(), static_cast<int>(blob.size()),
                                  SQLITE_TRANSIENT);
                break;
            }
            default: {
                const std::string text(input_.ConsumeIntegralInRange<std::size_t>(0, 5'000), 'a');
                sqlite3_bind_text(statement, parameter, text.data(), static_cast<int>(text.size()),
                                  SQLITE_TRANSIENT);
                break;
            }
        }
    }

    FuzzedDataProvider& input_;
    sqlite3* connection_;
    int columns_ = 1;
    int steps_ = 0;
};

inline void addToSum(std::uint32_t (&sum)[2], const std::string& bytes, std::size_t begin, std::size_t end,
                     bool bigEndianWords) {
    for (std::size_t at = begin; at < end; at += 4) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i)
            word |= std::uint32_t{static_cast<unsigned char>(bytes[at + i])}
                    << 8 * (bigEndianWords ? 3 - i : i);
        std::uint32_t& target = sum[(at - begin) / 4 % 2];
        target += word + sum[1 - (at - begin) / 4 % 2];
    }
}

inline void putSum(const std::uint32_t (&sum)[2], std::string& bytes, std::size_t at) {
    for (std::size_t i = 0; i < 8; ++i) bytes[at + i] = static_cast<char>(sum[i / 4] >> 8 * (3 - i % 4));
}

// Gives all frames of a log the checksums, and the salt, that make them valid.
inline void sealLog(std::string& log, std::size_t pageSize) {
    if (log.size() < 32) return;
    const bool bigEndianWords = (log[3] & 1) != 0;
    std::uint32_t sum[2] = {};
    addToSum(sum, log, 0, 24, bigEndianWords);
    putSum(sum, log, 24);
    for (std::size_t at = 32; at + 24 + pageSize <= log.size(); at += 24 + pageSize) {
        log.replace(at + 8, 8, log, 16, 8);
        addToSum(sum, log, at, at + 8, bigEndianWords);
        addToSum(sum, log, at + 24, at + 24 + pageSize, bigEndianWords);
        putSum(sum, log, at + 16);
    }
}

inline std::size_t pageSizeOf(const Files& files) {
    if (files.database.size() < 100) return 4096;
    const auto byte = [&](std::size_t at) {
        return std::size_t{static_cast<unsigned char>(files.database[at])};
    };
    const std::size_t size = byte(16) << 8 | byte(17);
    return size == 1 ? 65536 : std::max<std::size_t>(size, 512);
}

// Damages are taken from the rest of the input.
inline void damage(FuzzedDataProvider& input, Files& files) {
    const std::size_t pageSize = pageSizeOf(files);
    while (input.remaining_bytes() > 0) {
        std::string& file = input.ConsumeBool() ? files.database : files.log;
        if (file.empty()) return;
        const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(0, file.size() - 1);
        switch (input.ConsumeIntegralInRange(0, 7)) {
            case 0:
                file.resize(at);
                break;
            case 1:
                sealLog(files.log, pageSize);
                break;
            case 2: {  // one page in the place of another
                const std::size_t from =
                    input.ConsumeIntegralInRange<std::size_t>(0, file.size() - 1) / pageSize * pageSize;
                file.replace(at / pageSize * pageSize, pageSize, file.substr(from, pageSize));
                break;
            }
            default:  // numbers near the beginning of a page decide what the rest of it is
                file[at % pageSize < 64 ? at : at / pageSize * pageSize + at % 64] =
                    input.ConsumeIntegral<char>();
        }
    }
}

}  // namespace zavfuzz
