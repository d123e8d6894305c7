#include "toolkit/machine/packages/SqliteFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <span>
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
constexpr unsigned kMaxLevels = 20;  // of a tree; SQLite refuses deeper ones too
// A sparse file may claim any size.
constexpr std::uint64_t kMaxDatabaseSize = std::uint64_t{4} << 30;
constexpr std::uint64_t kMaxRecordSize = std::uint64_t{32} << 20;

// Takes a variable-length number of one to nine bytes. Each of the first eight bytes has seven bits of it.
std::optional<std::uint64_t> takeVarint(std::string_view& bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        const bool isNinth = i == 8;
        value = isNinth ? value << 8 | byte : value << 7 | (byte & 0x7FU);
        if (isNinth || byte < 0x80) {
            bytes.remove_prefix(i + 1);
            return value;
        }
    }
    return {};
}

// The size of a value. The types 10 and 11 are reserved; the result for them exceeds every record.
std::uint64_t widthOf(std::uint64_t type) {
    if (type <= 4) return type;
    if (type == 5) return 6;
    if (type <= 7) return 8;
    if (type <= 9) return 0;
    return (type - 12) / 2;
}

SqliteValue integer(std::string_view bytes) {
    const auto unused = static_cast<unsigned>(64 - 8 * bytes.size());
    const std::uint64_t value = bigEndian(bytes, 0, bytes.size());
    return {SqliteValue::Kind::Integer, static_cast<std::int64_t>(value << unused) >> unused, {}};
}

SqliteValue valueOf(std::uint64_t type, std::string_view bytes) {
    using Kind = SqliteValue::Kind;
    if (type == 0) return {Kind::Null, {}, {}};
    if (type <= 6) return integer(bytes);
    if (type == 7) return {Kind::Real, {}, {}};
    if (type == 8 || type == 9) return {Kind::Integer, static_cast<std::int64_t>(type - 8), {}};
    return {type % 2 == 0 ? Kind::Blob : Kind::Text, {}, bytes};
}

using Row = std::function<void(std::string_view record)>;

// The pages of a database: those in its log take the place of those in its file. Pages are numbered from 1.
class Pages {
  public:
    // None when this is no database that can be read. REQUIRES: the inputs outlive the result.
    static std::optional<Pages> open(const SqliteInput& database, const SqliteInput& log);

    std::size_t count() const { return count_; }
    // The size of the part of each page that holds content.
    std::size_t usable() const { return usable_; }

    // Fills `page` from the beginning of a page. REQUIRES: 0 < number <= count().
    bool read(std::uint64_t number, std::span<char> page) const;

    bool isLogIgnored() const { return !log_.isReadable() || log_.wasRestarted(); }

  private:
    Pages(const SqliteInput& database, const SqliteInput& log) : database_(database), log_(log) {}

    const SqliteInput& database_;
    SqliteLog log_;
    std::size_t count_{};
    std::size_t size_{};
    std::size_t usable_{};
};

std::optional<Pages> Pages::open(const SqliteInput& database, const SqliteInput& log) {
    Pages pages(database, log);
    std::array<char, kFileHeader> bytes;
    if (database.size == 0 || !pages.read(1, bytes)) return {};
    const std::string_view header(bytes.data(), bytes.size());
    const auto stored = static_cast<std::size_t>(bigEndian(header, 16, 2));
    const auto reserved = static_cast<std::size_t>(bigEndian(header, 20, 1));
    const std::size_t size = stored == 1 ? 65536 : stored;
    const bool sizeFits = std::has_single_bit(size) && reserved + kMinUsable <= size;
    const bool sameSize = pages.log_.isEmpty() || pages.log_.pageSize() == size;
    const bool isUtf16 = (bigEndian(header, 59, 1) & 2U) != 0;  // the other bits are ignored
    if (!header.starts_with(kMagic) || !sizeFits || !sameSize || isUtf16) return {};
    const std::uint64_t count = pages.log_.isEmpty() ? database.size / size : pages.log_.databasePages();
    pages.count_ = static_cast<std::size_t>(std::min<std::uint64_t>(count, kMaxDatabaseSize / size));
    pages.size_ = size;
    pages.usable_ = size - reserved;
    return pages;
}

bool Pages::read(std::uint64_t number, std::span<char> page) const {
    if (const auto offset = log_.find(number)) return log_.read(*offset, page);
    return database_.read((number - 1) * size_, page);
}

// The cells of a page. Pointers to them follow the header of the page.
class Cells {
  public:
    // REQUIRES: the page has the header.
    Cells(std::string_view page, std::size_t header, std::size_t headerSize)
        : page_(page),
          pointers_(header + headerSize),
          count_(static_cast<std::size_t>(bigEndian(page, header + 3, 2))),
          end_(pointers_ + 2 * count_) {}

    // Whether the page has all pointers. REQUIRED by what follows.
    bool arePointersInside() const { return end_ <= page_.size(); }
    std::size_t count() const { return count_; }
    // The size of the part of the page that cells can occupy.
    std::size_t room() const { return page_.size() - end_; }
    // What is in the page from the beginning of a cell. Empty when the cell is not in the part for cells.
    std::string_view at(std::size_t index) const {
        const auto offset = static_cast<std::size_t>(bigEndian(page_, pointers_ + 2 * index, 2));
        if (offset < end_) return {};
        return page_.substr(std::min(offset, page_.size()));
    }

  private:
    std::string_view page_;
    std::size_t pointers_;
    std::size_t count_;
    std::size_t end_;  // of the pointers
};

// A row in a leaf. A payload that is too long for the page continues in a chain of overflow pages.
struct LeafCell {
    std::uint64_t payloadSize;
    std::string_view local;  // the part of the payload in the page
    std::uint64_t overflow;  // the first overflow page; 0 if there is none
    std::size_t size;        // of the cell
};

// The size of the part of a payload that is in the page.
std::size_t localSize(std::uint64_t payloadSize, std::size_t usable) {
    const std::size_t most = usable - 35;
    const std::size_t least = (usable - 12) * 32 / 255 - 23;
    if (payloadSize <= most) return static_cast<std::size_t>(payloadSize);
    const auto filling = least + static_cast<std::size_t>((payloadSize - least) % (usable - 4));
    return filling <= most ? filling : least;  // `filling` leaves no overflow page partly empty
}

// None when the cell is damaged. `bytes` is what is in the page from its beginning.
std::optional<LeafCell> leafCell(std::string_view bytes, std::size_t usable) {
    std::string_view rest = bytes;
    const std::optional<std::uint64_t> payloadSize = takeVarint(rest);
    const std::optional<std::uint64_t> rowId = takeVarint(rest);
    if (!payloadSize || !rowId || *payloadSize > kMaxRecordSize) return {};
    const std::size_t local = localSize(*payloadSize, usable);
    const std::size_t end = local < *payloadSize ? local + 4 : local;
    if (end > rest.size()) return {};
    const std::uint64_t overflow = bigEndian(rest, local, end - local);
    return LeafCell{*payloadSize, rest.substr(0, local), overflow, bytes.size() - rest.size() + end};
}

// Walks the tree of pages of one table. No page is read twice, because the tree of a damaged file may be circular.
class TableWalk {
  public:
    TableWalk(const Pages& pages, const Row& row) : pages_(pages), row_(row), taken_(pages.count()) {}

    // Visits all rows below the page. False when some could not be read.
    bool walk(std::uint64_t page) { return walk(page, 0); }

  private:
    bool walk(std::uint64_t number, unsigned depth);
    bool walkChildren(const Cells& cells, unsigned depth);
    bool walkRows(const Cells& cells);
    bool readPayload(const LeafCell& cell);
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
    page.resize(pages_.usable());
    return pages_.read(number, page);
}

bool TableWalk::walk(std::uint64_t number, unsigned depth) {
    std::string page;
    if (depth == kMaxLevels || !takePage(number, page)) return false;
    const std::size_t header = number == 1 ? kFileHeader : 0;
    const std::uint64_t type = bigEndian(page, header, 1);
    if (type != kInterior && type != kLeaf) return false;
    const Cells cells(page, header, type == kInterior ? 12 : 8);
    if (!cells.arePointersInside()) return false;
    if (type == kLeaf) return walkRows(cells);
    const bool whole = walkChildren(cells, depth + 1);
    return walk(bigEndian(page, header + 8, 4), depth + 1) && whole;  // the child after all cells
}

bool TableWalk::walkChildren(const Cells& cells, unsigned depth) {
    bool whole = true;
    for (std::size_t i = 0; i < cells.count(); ++i) {
        const std::string_view cell = cells.at(i);
        if (cell.size() < 4 || !walk(bigEndian(cell, 0, 4), depth)) whole = false;
    }
    return whole;
}

bool TableWalk::walkRows(const Cells& cells) {
    std::size_t room = cells.room();  // in a sound page cells do not overlap
    bool whole = true;
    for (std::size_t i = 0; i < cells.count(); ++i) {
        const std::optional<LeafCell> cell = leafCell(cells.at(i), pages_.usable());
        if (!cell) {
            whole = false;
            continue;
        }
        if (cell->size > room) return false;
        room -= cell->size;
        if (readPayload(*cell))
            row_(payload_);
        else
            whole = false;
    }
    return whole;
}

// Puts together the payload of a cell. False when a page of it cannot be read.
bool TableWalk::readPayload(const LeafCell& cell) {
    payload_ = cell.local;
    std::uint64_t next = cell.overflow;
    while (payload_.size() < cell.payloadSize) {
        if (!takePage(next, overflow_)) return false;
        next = bigEndian(overflow_, 0, 4);
        payload_.append(overflow_, 4, static_cast<std::size_t>(cell.payloadSize - payload_.size()));
    }
    return true;
}

}  // namespace

SqliteValue sqliteColumn(std::string_view record, unsigned column) {
    std::string_view types = record;
    const std::optional<std::uint64_t> headerSize = takeVarint(types);
    if (!headerSize || *headerSize > record.size()) return {};
    std::string_view values = record.substr(static_cast<std::size_t>(*headerSize));
    types.remove_suffix(std::min(types.size(), values.size()));
    for (; const auto type = takeVarint(types); --column) {
        if (widthOf(*type) > values.size()) return {};
        const auto width = static_cast<std::size_t>(widthOf(*type));
        if (column == 0) return valueOf(*type, values.substr(0, width));
        values.remove_prefix(width);
    }
    return {};
}

SqliteReading readSqliteTable(const SqliteInput& database, const SqliteInput& log, std::string_view table,
                              const Row& row) {
    const std::optional<Pages> pages = Pages::open(database, log);
    if (!pages) return SqliteReading::Incomplete;
    std::uint64_t root = 0;
    const Row findRoot = [&](std::string_view record) {
        const bool wanted =
            sqliteColumn(record, 0).bytes == "table" && sqliteColumn(record, 1).bytes == table;
        if (wanted) root = static_cast<std::uint64_t>(sqliteColumn(record, 3).number);
    };
    TableWalk(*pages, findRoot).walk(1);
    if (!TableWalk(*pages, row).walk(root)) return SqliteReading::Incomplete;
    return pages->isLogIgnored() ? SqliteReading::LogIgnored : SqliteReading::Complete;
}

}  // namespace toolkit
