#include "toolkit/quorvah/sources/Logins.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "toolkit/machine/packages/SqliteFile.h"
#include "toolkit/machine/text/Budget.h"
#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kRecord = 384;
// On 64-bit machines that never ran 32-bit programs the session and the time have 64 bits.
constexpr std::size_t kWideRecord = 400;

constexpr unsigned kBoot = 2;
constexpr unsigned kUserProcess = 7;
constexpr unsigned kDeadProcess = 8;

// Times before 1980 and after 2100 are no times.
constexpr std::int64_t kEarliest = 315'532'800;
constexpr std::int64_t kLatest = 4'102'444'800;

bool isTime(std::int64_t seconds) {
    return seconds > kEarliest && seconds < kLatest;
}

std::string textAt(std::string_view record, std::size_t offset, std::size_t size) {
    const std::string_view text = record.substr(offset, size);
    return std::string(text.substr(0, text.find('\0')));
}

// One record of the file.
struct Record {
    unsigned type = 0;
    std::int64_t time = 0;
    std::string line;
    std::string user;
    std::string host;
};

// The type is a 16-bit number below 256, so the zero byte shows the byte order.
Record readRecord(std::string_view bytes) {
    Record record;
    const bool little = bytes[1] == '\0';
    record.type = static_cast<unsigned char>(little ? bytes[0] : bytes[1]);
    record.line = textAt(bytes, 8, 32);
    record.user = textAt(bytes, 44, 32);
    record.host = textAt(bytes, 76, 256);
    const std::size_t at = bytes.size() == kWideRecord ? 344 : 340;
    const std::size_t width = bytes.size() == kWideRecord ? 8 : 4;
    const std::uint64_t time = little ? littleEndian(bytes, at, width) : bigEndian(bytes, at, width);
    record.time = time <= static_cast<std::uint64_t>(kLatest) ? static_cast<std::int64_t>(time) : 0;
    return record;
}

// Displays of this machine, and the names of terminal multiplexers, are no hosts.
std::string remoteHost(const std::string& host) {
    const bool local = host.starts_with(':') || host.find('(') != std::string::npos || host == "localhost";
    return local ? std::string() : host;
}

// Calls `row` for each row of a table. Returns whether the database could be read completely; one that does not exist
// can.
bool readTable(const Root& root, const std::string& path, const char* table,
               const std::function<void(std::string_view)>& row) {
    InputFile file(root, path);
    if (file.state() == InputFile::State::Missing || file.state() == InputFile::State::Denied) return true;
    if (file.state() != InputFile::State::Open) return false;
    InputFile log(root, path + "-wal");
    Allowance allowance;
    allowance.bytesRead = std::uint64_t{64} << 20;
    allowance.deadline = root.deadline();
    Budget budget(allowance);
    const auto inputOf = [&budget](InputFile& input) -> SqliteInput {
        return {[&](std::uint64_t offset, std::span<char> bytes) {
                    return budget.read(bytes.size()) && input.readAt(offset, bytes) == bytes.size();
                },
                input.size()};
    };
    const SqliteReading reading =
        readSqliteTable(inputOf(file), inputOf(log), table, [&](std::string_view record) {
            if (budget.item()) row(record);
        });
    return reading == SqliteReading::Complete && !budget.isSpent();
}

void keepNewer(std::optional<Login>& newest, std::optional<Login> login) {
    if (login && (!newest || login->time > newest->time)) newest = std::move(login);
}

// Databases of wtmpdb count microseconds. The rows of users have the type 3.
void readLoginDatabase(const Root& root, std::optional<Login>& newest, bool& complete) {
    constexpr std::int64_t kMicroseconds = 1'000'000;
    constexpr std::int64_t kUser = 3;
    for (const char* const path : {"/var/lib/wtmpdb/wtmp.db", "/var/log/wtmp.db"}) {
        const bool whole = readTable(root, path, "wtmp", [&newest](std::string_view row) {
            Login login;
            login.user = sqliteColumn(row, 2).bytes;
            login.time = sqliteColumn(row, 3).number / kMicroseconds;
            const SqliteValue logout = sqliteColumn(row, 4);
            if (logout.kind == SqliteValue::Kind::Integer) login.logout = logout.number / kMicroseconds;
            login.terminal = sqliteColumn(row, 5).bytes;
            login.host = remoteHost(std::string(sqliteColumn(row, 6).bytes));
            if (sqliteColumn(row, 1).number == kUser && isTime(login.time) && !login.user.empty())
                keepNewer(newest, std::move(login));
        });
        complete = complete && whole;
    }
}

bool readLastLogins(const Root& root, std::vector<Login>& logins) {
    return readTable(root, "/var/lib/lastlog/lastlog2.db", "Lastlog2", [&logins](std::string_view row) {
        Login login;
        login.user = sqliteColumn(row, 0).bytes;
        login.time = sqliteColumn(row, 1).number;
        login.terminal = sqliteColumn(row, 2).bytes;
        login.host = remoteHost(std::string(sqliteColumn(row, 3).bytes));
        if (isTime(login.time)) logins.push_back(std::move(login));
    });
}

// The end of the file is enough: the records are in the order of time.
std::optional<Login> newestIn(const Root& root, const std::string& path, bool& complete) {
    constexpr std::uint64_t kMost = std::uint64_t{8} << 20;
    InputFile file(root, path);
    if (file.state() != InputFile::State::Open) return std::nullopt;
    const std::size_t size = loginRecordSize(file.size());
    const std::uint64_t records = file.size() / size;
    const std::uint64_t read = std::min<std::uint64_t>(records, kMost / size);
    std::string bytes(read * size, '\0');
    bytes.resize(file.readAt((records - read) * size, bytes));
    std::optional<Login> login = newestLogin(bytes, size);
    if (!login && read < records) complete = false;
    if (file.failed()) complete = false;
    return login;
}

}  // namespace

std::size_t loginRecordSize(std::uint64_t fileSize) {
    return fileSize % kRecord != 0 && fileSize % kWideRecord == 0 ? kWideRecord : kRecord;
}

std::optional<Login> newestLogin(std::string_view records, std::size_t recordSize) {
    std::vector<std::pair<std::string, std::int64_t>> ends;  // by terminal, of the records seen so far
    std::int64_t shutdown = 0;
    for (std::size_t end = records.size() / recordSize * recordSize; end > 0; end -= recordSize) {
        Record record = readRecord(records.substr(end - recordSize, recordSize));
        if (!isTime(record.time)) continue;
        if (record.type == kBoot || record.user == "shutdown") shutdown = record.time;
        if (record.type == kDeadProcess && ends.size() < 4096) ends.emplace_back(record.line, record.time);
        if (record.type != kUserProcess || record.user.empty()) continue;
        Login login{record.user, record.time, std::nullopt, record.line, remoteHost(record.host)};
        // The last one that was seen is the first one in time.
        for (const auto& [line, time] : ends) {
            if (line == record.line) login.logout = time;
        }
        if (!login.logout && shutdown != 0) login.logout = shutdown;
        return login;
    }
    return std::nullopt;
}

std::optional<Login> lastLogin(const Root& root, bool& complete) {
    std::optional<Login> newest = newestIn(root, "/var/log/wtmp", complete);
    readLoginDatabase(root, newest, complete);
    for (const char* const path : {"/run/utmp", "/var/run/utmp"})
        keepNewer(newest, newestIn(root, path, complete));
    std::vector<Login> last;
    complete = readLastLogins(root, last) && complete;
    for (Login& login : last) keepNewer(newest, std::move(login));
    return newest;
}

LastLogins::LastLogins(const Root& root) : file_(root, "/var/log/lastlog") {
    readLastLogins(root, database_);
}

std::optional<std::int64_t> LastLogins::of(const std::string& name, std::uint32_t uid) {
    // A record: the time, 32 bytes for the terminal and 256 for the host. The file has a record for every number up to
    // the highest one, with holes.
    constexpr std::uint64_t kSize = 292;
    constexpr std::uint64_t kWideSize = 296;
    std::optional<std::int64_t> newest;
    for (const Login& login : database_) {
        if (login.user == name) newest = login.time;
    }
    if (file_.state() != InputFile::State::Open) return newest;
    const bool wide = file_.size() % kSize != 0 && file_.size() % kWideSize == 0;
    std::array<char, 4> bytes{};
    if (file_.readAt(uid * (wide ? kWideSize : kSize), bytes) != bytes.size()) return newest;
    const std::string_view text(bytes.data(), bytes.size());
    for (const std::uint64_t time : {littleEndian(text, 0, 4), bigEndian(text, 0, 4)}) {
        const auto seconds = static_cast<std::int64_t>(time);
        if (isTime(seconds)) return std::max(newest.value_or(0), seconds);
    }
    return newest;
}

}  // namespace toolkit::quorvah
