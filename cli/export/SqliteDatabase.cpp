#include "cli/export/SqliteDatabase.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "cli/system/Failure.h"

namespace zavcli {

namespace {

class File {
  public:
    // Does not block, and does not follow a link.
    explicit File(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)) {}
    ~File() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

[[noreturn]] void cannotRead(const std::string& path, std::string_view reason) {
    throw Failure(kExitFailed, fmt::format("cannot read the database {}: {}", path, reason));
}

// Nothing if there is no such file.
std::optional<std::string> contentOf(const std::string& path) {
    const File file(path);
    if (file.get() < 0 && errno == ENOENT) return std::nullopt;
    struct stat state = {};
    if (file.get() < 0 || ::fstat(file.get(), &state) != 0) cannotRead(path, systemErrorText(errno));
    if (!S_ISREG(state.st_mode)) cannotRead(path, "it is not a regular file");
    if (static_cast<std::uint64_t>(state.st_size) > SqliteDatabase::kMaxSize)
        cannotRead(path, "it is larger than 1 GiB");
    std::string content(static_cast<std::size_t>(state.st_size), '\0');
    std::size_t done = 0;
    while (done < content.size()) {
        const ssize_t count = ::read(file.get(), content.data() + done, content.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) cannotRead(path, systemErrorText(errno));
        if (count == 0) cannotRead(path, "it became shorter while it was read");
        done += static_cast<std::size_t>(count);
    }
    return content;
}

}  // namespace

SqliteDatabase::SqliteDatabase(std::string path) : path_(std::move(path)) {
    const std::optional<std::string> file = contentOf(path_);
    if (sqlite3_open(":memory:", &database_) != SQLITE_OK) fail();
    if (file && !file->empty()) load(*file);
}

SqliteDatabase::~SqliteDatabase() {
    sqlite3_close(database_);
}

void SqliteDatabase::load(const std::string& file) {
    auto* const memory = static_cast<unsigned char*>(sqlite3_malloc64(file.size()));
    if (memory == nullptr) throw std::bad_alloc();
    std::memcpy(memory, file.data(), file.size());
    const auto size = static_cast<sqlite3_int64>(file.size());
    // SQLite frees the memory, also if it fails.
    if (sqlite3_deserialize(database_, "main", memory, size, size,
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE) != SQLITE_OK)
        fail();
}

void SqliteDatabase::execute(const std::string& sql) {
    if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

std::int64_t SqliteDatabase::number(const std::string& sql) {
    SqliteStatement statement(*this, sql);
    return statement.next() ? statement.number(0) : 0;
}

std::string SqliteDatabase::content() const {
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> bytes(
        sqlite3_serialize(database_, "main", &size, 0), sqlite3_free);
    if (bytes == nullptr) throw std::bad_alloc();
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<std::size_t>(size)};
}

void SqliteDatabase::fail() const {
    throw Failure(kExitFailed, fmt::format("the database {}: {}", path_, sqlite3_errmsg(database_)));
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const std::string& sql) : database_(database) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database.database_, sql.c_str(), -1, &statement, nullptr));
    statement_.reset(statement);
}

void SqliteStatement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

void SqliteStatement::check(int code) const {
    if (code != SQLITE_OK) database_.fail();
}

void SqliteStatement::bind(int parameter, std::string_view text) {
    // A view of nothing may have no address, which would be a null value.
    check(sqlite3_bind_text64(statement_.get(), parameter, text.empty() ? "" : text.data(), text.size(),
                              SQLITE_TRANSIENT, SQLITE_UTF8));
}

void SqliteStatement::bind(int parameter, std::int64_t number) {
    check(sqlite3_bind_int64(statement_.get(), parameter, number));
}

void SqliteStatement::bind(int parameter, double number) {
    check(sqlite3_bind_double(statement_.get(), parameter, number));
}

void SqliteStatement::bindNull(int parameter) {
    check(sqlite3_bind_null(statement_.get(), parameter));
}

bool SqliteStatement::next() {
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) database_.fail();
    return code == SQLITE_ROW;
}

std::string SqliteStatement::text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
    return text == nullptr ? std::string() : text;
}

std::int64_t SqliteStatement::number(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

void SqliteStatement::execute() {
    next();
    check(sqlite3_reset(statement_.get()));
    check(sqlite3_clear_bindings(statement_.get()));
}

}  // namespace zavcli
