#include "toolkit/machine/packages/SqliteFile.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "toolkit/machine/text/BigEndian.h"

namespace toolkit {
namespace {

constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kFileHeader = 100;
constexpr unsigned kInterior = 5;
constexpr unsigned kLeaf = 13;
constexpr unsigned kDeepest = 20;  // a deeper tree than any file can hold runs in a circle
constexpr std::uint64_t kMostRead = std::uint64_t{4}
                                    << 30;  // bytes of a file; a sparse one may claim any size
constexpr std::uint64_t kLongestRecord = std::uint64_t{32} << 20;

// Takes a number of one to nine bytes, of which all but the ninth carry seven bits.
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

// One way through the tree of pages that is a table. Each page is read once: a sound table has it once, a broken one may
// send its readers in circles.
class TableWalk {
  public:
    TableWalk(const ReadBytes& read, std::uint64_t size, const Row& row);

    // All rows below the page; false when some could not be read.
    bool walk(std::uint64_t page) { return walk(page, 0); }

  private:
    bool walk(std::uint64_t number, unsigned depth);
    bool walkInterior(std::string_view page, std::size_t head, unsigned depth);
    bool walkLeaf(std::string_view page, std::size_t head);
    std::size_t readPayload(std::string_view cell);
    bool readOverflow(std::uint64_t page, std::size_t size);
    bool takePage(std::uint64_t number, std::string& page);

    const ReadBytes& read_;
    const Row& row_;
    std::size_t pageSize_ = 0;  // 0 when the file is no database
    std::size_t usable_ = 0;
    std::vector<bool> taken_;  // of each page
    std::string payload_;
    std::string overflow_;  // the latest page of that kind
};

TableWalk::TableWalk(const ReadBytes& read, std::uint64_t size, const Row& row) : read_(read), row_(row) {
    std::array<char, kFileHeader> header;
    if (!read(0, header)) return;
    const std::string_view file(header.data(), header.size());
    if (file.substr(0, kMagic.size()) != kMagic) return;
    const auto told = static_cast<std::size_t>(bigEndian(file, 16, 2));
    const std::size_t pageSize = told == 1 ? 65536 : told;
    const auto reserved = static_cast<std::size_t>(bigEndian(file, 20, 1));
    if (pageSize < 512 || reserved > pageSize - 480) return;
    pageSize_ = pageSize;
    usable_ = pageSize - reserved;
    taken_.resize(static_cast<std::size_t>(std::min(size, kMostRead) / pageSize));
}

// Pages are numbered from 1. False when the file does not have the whole of it, and when it was taken before.
bool TableWalk::takePage(std::uint64_t number, std::string& page) {
    if (number == 0 || number > taken_.size() || taken_[static_cast<std::size_t>(number - 1)]) return false;
    taken_[static_cast<std::size_t>(number - 1)] = true;
    page.resize(usable_);
    return read_((number - 1) * pageSize_, page);
}

bool TableWalk::walk(std::uint64_t number, unsigned depth) {
    std::string page;
    if (depth > kDeepest || !takePage(number, page)) return false;
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
    if (head + 8 + 2 * count > page.size()) return false;
    std::size_t room =
        page.size() - (head + 8 + 2 * count);  // for cells, which do not overlap in a sound page
    bool whole = true;
    for (std::size_t i = 0; i < count; ++i) {
        const auto cell = static_cast<std::size_t>(bigEndian(page, head + 8 + 2 * i, 2));
        const std::size_t length = cell < page.size() ? readPayload(page.substr(cell)) : 0;
        if (length > room) return false;
        room -= length;
        if (length > 0) row_(payload_);
        whole = whole && length > 0;
    }
    return whole;
}

// The payload of a leaf's cell: what the page holds of it, then a chain of overflow pages. The length of the cell; 0 when
// it does not hold together.
std::size_t TableWalk::readPayload(std::string_view cell) {
    const std::size_t before = cell.size();
    std::uint64_t size = 0;
    std::uint64_t rowId = 0;
    const std::uint64_t most = std::min<std::uint64_t>(taken_.size() * pageSize_, kLongestRecord);
    if (!takeVarint(cell, size) || !takeVarint(cell, rowId) || size > most) return 0;
    const std::size_t mostLocal = usable_ - 35;
    const std::size_t leastLocal = (usable_ - 12) * 32 / 255 - 23;
    std::size_t local = size;
    if (size > mostLocal) {
        local = leastLocal + (size - leastLocal) % (usable_ - 4);
        if (local > mostLocal) local = leastLocal;
    }
    const bool overflows = local < size;
    const std::size_t end = local + (overflows ? 4 : 0);
    if (end > cell.size()) return 0;
    payload_ = cell.substr(0, local);
    if (overflows && !readOverflow(bigEndian(cell, local, 4), size)) return 0;
    return before - cell.size() + end;
}

// Appends what stands in the chain of pages, until the payload has this size.
bool TableWalk::readOverflow(std::uint64_t next, std::size_t size) {
    while (payload_.size() < size) {
        if (!takePage(next, overflow_)) return false;
        next = bigEndian(overflow_, 0, 4);
        const std::size_t wanted = std::min(size - payload_.size(), usable_ - 4);
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

bool readSqliteTable(const ReadBytes& read, std::uint64_t size, std::string_view table, const Row& row) {
    std::uint64_t root = 0;
    const Row findRoot = [&](std::string_view record) {
        const bool wanted =
            sqliteColumn(record, 0).bytes == "table" && sqliteColumn(record, 1).bytes == table;
        if (wanted) root = static_cast<std::uint64_t>(sqliteColumn(record, 3).number);
    };
    TableWalk(read, size, findRoot).walk(1);
    return TableWalk(read, size, row).walk(root);
}

}  // namespace toolkit
