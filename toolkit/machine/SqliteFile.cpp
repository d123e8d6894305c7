#include "toolkit/machine/SqliteFile.h"

#include <algorithm>
#include <string>

#include "toolkit/machine/BigEndian.h"

namespace toolkit {
namespace {

constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kFileHeader = 100;
constexpr unsigned kInterior = 5;
constexpr unsigned kLeaf = 13;
constexpr unsigned kDeepest = 20;  // a deeper tree than any file can hold runs in a circle

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

// One way through the tree of pages that is a table.
class TableWalk {
  public:
    TableWalk(std::string_view file, const Row& row);

    // All rows below the page; false when some could not be read.
    bool walk(std::uint64_t page) { return walk(page, 0); }

  private:
    bool walk(std::uint64_t number, unsigned depth);
    bool walkInterior(std::string_view page, std::size_t head, unsigned depth);
    bool walkLeaf(std::string_view page, std::size_t head);
    bool readPayload(std::string_view cell);
    std::string_view takePage(std::uint64_t number);

    const std::string_view file_;
    const Row& row_;
    std::size_t pageSize_ = 0;  // 0 when the file is no database
    std::size_t usable_ = 0;
    std::size_t pagesLeft_ = 0;
    std::string payload_;
};

TableWalk::TableWalk(std::string_view file, const Row& row) : file_(file), row_(row) {
    if (file.size() < kFileHeader || file.substr(0, kMagic.size()) != kMagic) return;
    const auto size = static_cast<std::size_t>(bigEndian(file, 16, 2));
    const std::size_t pageSize = size == 1 ? 65536 : size;
    const auto reserved = static_cast<std::size_t>(bigEndian(file, 20, 1));
    if (pageSize < 512 || reserved > pageSize - 480) return;
    pageSize_ = pageSize;
    usable_ = pageSize - reserved;
    pagesLeft_ = file.size() / pageSize;
}

// Pages are numbered from 1. Empty when the file does not have the whole of it, and when more pages were
// asked for than there are: a sound table has each page once, a broken one may send its readers in circles.
std::string_view TableWalk::takePage(std::uint64_t number) {
    if (pagesLeft_ == 0 || number == 0 || number > file_.size() / pageSize_) return {};
    --pagesLeft_;
    return file_.substr(static_cast<std::size_t>(number - 1) * pageSize_, usable_);
}

bool TableWalk::walk(std::uint64_t number, unsigned depth) {
    const std::string_view page = depth > kDeepest ? std::string_view() : takePage(number);
    if (page.empty()) return false;
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
    bool whole = true;
    for (std::size_t i = 0; i < count; ++i) {
        const auto cell = static_cast<std::size_t>(bigEndian(page, head + 8 + 2 * i, 2));
        if (cell < page.size() && readPayload(page.substr(cell))) {
            row_(payload_);
        } else {
            whole = false;
        }
    }
    return whole;
}

// The payload of a leaf's cell: what the page holds of it, then a chain of overflow pages.
bool TableWalk::readPayload(std::string_view cell) {
    std::uint64_t size = 0;
    std::uint64_t rowId = 0;
    if (!takeVarint(cell, size) || !takeVarint(cell, rowId) || size > file_.size()) return false;
    const std::size_t most = usable_ - 35;
    const std::size_t least = (usable_ - 12) * 32 / 255 - 23;
    std::size_t local = size;
    if (size > most) {
        local = least + (size - least) % (usable_ - 4);
        if (local > most) local = least;
    }
    const bool overflows = local < size;
    if (local + (overflows ? 4 : 0) > cell.size()) return false;
    payload_ = cell.substr(0, local);
    std::uint64_t next = overflows ? bigEndian(cell, local, 4) : 0;
    while (payload_.size() < size) {
        const std::string_view page = takePage(next);
        if (page.empty()) return false;
        next = bigEndian(page, 0, 4);
        payload_ += page.substr(4, std::min<std::size_t>(size - payload_.size(), usable_ - 4));
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

bool readSqliteTable(std::string_view file, std::string_view table, const Row& row) {
    std::uint64_t root = 0;
    const Row findRoot = [&](std::string_view record) {
        const bool wanted =
            sqliteColumn(record, 0).bytes == "table" && sqliteColumn(record, 1).bytes == table;
        if (wanted) root = static_cast<std::uint64_t>(sqliteColumn(record, 3).number);
    };
    TableWalk(file, findRoot).walk(1);
    return TableWalk(file, row).walk(root);
}

}  // namespace toolkit
