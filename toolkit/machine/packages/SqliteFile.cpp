#include "toolkit/machine/packages/SqliteFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <vector>

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit {
namespace {

constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kFileHeader = 100;
constexpr std::size_t kMinUsable = 480;  // bytes of a page
constexpr unsigned kInterior = 5;
constexpr unsigned kLeaf = 13;
constexpr unsigned kMaxDepth = 20;  // no file can hold a deeper tree, so a deeper one is circular
// A sparse file may claim any size.
constexpr std::uint64_t kMaxDatabaseSize = std::uint64_t{4} << 30;
constexpr std::uint64_t kMaxRecordSize = std::uint64_t{32} << 20;

// Takes a variable-length number of one to nine bytes. Each of the first eight bytes has seven bits of it.
bool takeVarint(std::string_view& bytes, std::uint64_t& value) {
    value = 0;
    for (std::size_t i = 0; i < 9 && i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        value = i == 8 ? value << 8 | byte : value << 7 | (byte & 0x7FU);
        if (byte < 0x80 || i == 8) {
            bytes.remove_prefix(i + 1);
            return true;
        }
    }
    return false;
}

std::size_t widthOf(std::uint64_t type) {
    static constexpr std::size_t kWidths[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
    return type < 12 ? kWidths[type] : static_cast<std::size_t>((type - 12) / 2);
}

SqliteValue integer(std::string_view bytes) {
    const auto unused = static_cast<unsigned>(64 - 8 * bytes.size());
    const std::uint64_t value = bigEndian(bytes, 0, bytes.size());
    return {SqliteValue::Kind::Integer, static_cast<std::int64_t>(value << unused) >> unused, {}};
}

SqliteValue valueOf(std::uint64_t type, std::string_view bytes) {
    using Kind = SqliteValue::Kind;
    if (type == 0) return {Kind::Null, 0, {}};
    if (type <= 6) return integer(bytes);
    if (type == 7) return {Kind::Real, 0, {}};
    if (type <= 9) return {Kind::Integer, static_cast<std::int64_t>(type - 8), {}};
    if (type < 12) return {};
    return {type % 2 == 0 ? Kind::Blob : Kind::Text, 0, bytes};
}

using Row = std::function<void(std::string_view record)>;

// The pages of a database: those in its log take the place of those in its file. Pages are numbered from 1.
class Pages {
  public:
    Pages(const SqliteInput& database, const SqliteInput& log);

    // 0 when this is no database that can be read.
    std::size_t count() const { return count_; }
    std::size_t size() const { return size_; }
    // The size of the part of each page that holds content.
    std::size_t usable() const { return usable_; }

    // REQUIRES: 0 < number <= count().
    bool read(std::size_t number, std::string& page) const;

    bool isLogIgnored() const { return !log_.isReadable() || log_.wasRestarted(); }

  private:
    bool readHeader(std::array<char, kFileHeader>& header) const;

    const SqliteInput& database_;
    SqliteLog log_;
    std::size_t count_ = 0;
    std::size_t size_ = 0;
    std::size_t usable_ = 0;
};

Pages::Pages(const SqliteInput& database, const SqliteInput& log) : database_(database), log_(log) {
    std::array<char, kFileHeader> bytes;
    if (database.size == 0 || !readHeader(bytes)) return;
    const std::string_view header(bytes.data(), bytes.size());
    const auto stored = static_cast<std::size_t>(bigEndian(header, 16, 2));
    const auto reserved = static_cast<std::size_t>(bigEndian(header, 20, 1));
    size_ = stored == 1 ? 65536 : stored;
    const bool sizeFits = std::has_single_bit(size_) && size_ >= 512 && reserved + kMinUsable <= size_;
    const bool sameSize = log_.isEmpty() || log_.pageSize() == size_;
    const bool isUtf8 = (bigEndian(header, 56, 4) & 3U) <= 1;  // the other bits are ignored
    if (!header.starts_with(kMagic) || !sizeFits || !sameSize || !isUtf8) return;
    usable_ = size_ - reserved;
    const std::uint64_t count = log_.isEmpty() ? database.size / size_ : log_.databasePages();
    count_ = static_cast<std::size_t>(std::min<std::uint64_t>(count, kMaxDatabaseSize / size_));
}

bool Pages::readHeader(std::array<char, kFileHeader>& header) const {
    if (const auto offset = log_.find(1)) return log_.read(*offset, header);
    return database_.read(0, header);
}

bool Pages::read(std::size_t number, std::string& page) const {
    page.resize(usable_);
    if (const auto offset = log_.find(number)) return log_.read(*offset, page);
    return database_.read(std::uint64_t{number - 1} * size_, page);
}

// Walks the tree of pages of one table. No page is read twice, because the tree of a damaged file may be circular.
class TableWalk {
  public:
    TableWalk(const Pages& pages, const Row& row) : pages_(pages), row_(row), taken_(pages.count()) {}

    // Visits all rows below the page. False when some could not be read.
    bool walk(std::uint64_t page) { return walk(page, 0); }

  private:
    bool walk(std::uint64_t number, unsigned depth);
    bool walkInterior(std::string_view page, std::size_t head, unsigned depth);
    bool walkLeaf(std::string_view page, std::size_t head);
    std::size_t readPayload(std::string_view cell);
    bool readOverflow(std::uint64_t page, std::size_t size);
    bool takePage(std::uint64_t number, std::string& page);

    const Pages& pages_;
    const Row& row_;
    std::vector<bool> taken_;  // whether each page was read
    std::string payload_;
    std::string overflow_;  // the latest overflow page
};

// Reads a page. False when the database does not have it or it was read before.
bool TableWalk::takePage(std::uint64_t number, std::string& page) {
    if (number == 0 || number > taken_.size() || taken_[static_cast<std::size_t>(number - 1)]) return false;
    taken_[static_cast<std::size_t>(number - 1)] = true;
    return pages_.read(static_cast<std::size_t>(number), page);
}

bool TableWalk::walk(std::uint64_t number, unsigned depth) {
    std::string page;
    if (depth > kMaxDepth || !takePage(number, page)) return false;
    const std::size_t head = number == 1 ? kFileHeader : 0;
    const std::uint64_t type = bigEndian(page, head, 1);
    if (type == kInterior) return walkInterior(page, head, depth);
    return type == kLeaf && walkLeaf(page, head);
}

bool TableWalk::walkInterior(std::string_view page, std::size_t head, unsigned depth) {
    const auto count = static_cast<std::size_t>(bigEndian(page, head + 3, 2));
    if (head + 12 + 2 * count > page.size()) return false;
    bool whole = true;
    for (std::size_t i = 0; i < count; ++i) {
        const auto cell = static_cast<std::size_t>(bigEndian(page, head + 12 + 2 * i, 2));
        const bool read = cell + 4 <= page.size() && walk(bigEndian(page, cell, 4), depth + 1);
        whole = whole && read;
    }
    return walk(bigEndian(page, head + 8, 4), depth + 1) && whole;
}

bool TableWalk::walkLeaf(std::string_view page, std::size_t head) {
    const auto count = static_cast<std::size_t>(bigEndian(page, head + 3, 2));
    const std::size_t cells = head + 8 + 2 * count;
    if (cells > page.size()) return false;
    std::size_t room = page.size() - cells;  // in a sound page cells do not overlap
    bool whole = true;
    for (std::size_t i = 0; i < count; ++i) {
        const auto cell = static_cast<std::size_t>(bigEndian(page, head + 8 + 2 * i, 2));
        const bool isInside = cell >= cells && cell < page.size();
        const std::size_t length = isInside ? readPayload(page.substr(cell)) : 0;
        if (length > room) return false;
        room -= length;
        if (length > 0) row_(payload_);
        whole = whole && length > 0;
    }
    return whole;
}

// Reads the payload of a leaf's cell: the part in the page, then a chain of overflow pages. Returns the length of the cell in
// the page, or 0 when it is damaged.
std::size_t TableWalk::readPayload(std::string_view cell) {
    const std::size_t before = cell.size();
    std::uint64_t size = 0;
    std::uint64_t rowId = 0;
    const std::size_t usable = pages_.usable();
    const std::uint64_t most = std::min<std::uint64_t>(taken_.size() * pages_.size(), kMaxRecordSize);
    if (!takeVarint(cell, size) || !takeVarint(cell, rowId) || size > most) return 0;
    const std::size_t mostLocal = usable - 35;
    const std::size_t leastLocal = (usable - 12) * 32 / 255 - 23;
    std::size_t local = size;
    if (size > mostLocal) {
        local = leastLocal + (size - leastLocal) % (usable - 4);
        if (local > mostLocal) local = leastLocal;
    }
    const bool overflows = local < size;
    const std::size_t end = local + (overflows ? 4 : 0);
    if (end > cell.size()) return 0;
    payload_ = cell.substr(0, local);
    if (overflows && !readOverflow(bigEndian(cell, local, 4), size)) return 0;
    return before - cell.size() + end;
}

// Appends the content of a chain of overflow pages until the payload has this size.
bool TableWalk::readOverflow(std::uint64_t next, std::size_t size) {
    while (payload_.size() < size) {
        if (!takePage(next, overflow_)) return false;
        next = bigEndian(overflow_, 0, 4);
        const std::size_t wanted = std::min(size - payload_.size(), pages_.usable() - 4);
        payload_.append(overflow_, 4, wanted);
    }
    return true;
}

}  // namespace

SqliteValue sqliteColumn(std::string_view record, unsigned column) {
    std::string_view types = record;
    std::uint64_t headerSize = 0;
    if (!takeVarint(types, headerSize) || headerSize > record.size()) return {};
    const std::size_t sizeOfSize = record.size() - types.size();
    if (headerSize < sizeOfSize) return {};
    std::string_view values = record.substr(headerSize);
    types = types.substr(0, headerSize - sizeOfSize);
    for (std::uint64_t type = 0; takeVarint(types, type); --column) {
        const std::size_t width = widthOf(type);
        if (width > values.size()) return {};
        if (column == 0) return valueOf(type, values.substr(0, width));
        values.remove_prefix(width);
    }
    return {};
}

SqliteReading readSqliteTable(const SqliteInput& database, const SqliteInput& log, std::string_view table,
                              const Row& row) {
    const Pages pages(database, log);
    std::uint64_t root = 0;
    const Row findRoot = [&](std::string_view record) {
        const bool wanted =
            sqliteColumn(record, 0).bytes == "table" && sqliteColumn(record, 1).bytes == table;
        if (wanted) root = static_cast<std::uint64_t>(sqliteColumn(record, 3).number);
    };
    TableWalk(pages, findRoot).walk(1);
    if (!TableWalk(pages, row).walk(root)) return SqliteReading::Incomplete;
    return pages.isLogIgnored() ? SqliteReading::LogIgnored : SqliteReading::Complete;
}

}  // namespace toolkit
