#include "toolkit/quorvah/sources/PartitionTable.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Utf8.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMbrSize = 512;
constexpr std::size_t kMbrEntries = 446;
constexpr std::size_t kMbrEntrySize = 16;
constexpr unsigned kProtective = 0xEE;  // the MBR protects a GPT

constexpr std::size_t kGptHeaderSize = 92;
constexpr std::size_t kGptEntrySize = 128;  // the smallest size
constexpr std::size_t kMaxEntrySize = 4096;
constexpr std::size_t kGptNameLength = 36;  // UTF-16 code units
constexpr std::size_t kGuidSize = 16;
constexpr std::uint64_t kMaxEntries = 1024;  // many more than partitioning tools create

constexpr int kFirstLogical = 5;
constexpr int kMaxLogical = 256;

// The number at `offset` in hexadecimal, two digits per byte.
std::string hexAt(std::string_view bytes, std::size_t offset, std::size_t width) {
    return hexDigits(littleEndian(bytes, offset, width), 2 * static_cast<int>(width));
}

// The first three fields of a GUID are little-endian on disk.
std::string guid(std::string_view bytes) {
    std::string text = hexAt(bytes, 0, 4) + "-" + hexAt(bytes, 4, 2) + "-" + hexAt(bytes, 6, 2) + "-";
    for (std::size_t i = 8; i < kGuidSize; ++i) {
        if (i == 10) text += '-';
        text += hexAt(bytes, i, 1);
    }
    return text;
}

// The name of a partition. Half characters are omitted.
std::string name(std::string_view units) {
    return utf8FromUtf16(utf16Units(units.substr(0, 2 * kGptNameLength)), "");
}

// The number of blocks between the first and the last one; 0 if they are in the wrong order.
std::uint64_t gptBlocks(std::string_view entry) {
    const std::uint64_t first = littleEndian(entry, 32, 8);
    const std::uint64_t last = littleEndian(entry, 40, 8);
    return last < first ? 0 : counted(last - first).value_or(0) + 1;
}

PartitionTable readGpt(const ReadDisk& read, std::uint64_t blockSize) {
    PartitionTable table;
    const std::string header = read(blockSize, kGptHeaderSize);
    if (header.size() < kGptHeaderSize || !header.starts_with("EFI PART")) return {};
    table.type = "gpt";
    const std::uint64_t block = littleEndian(header, 72, 8);
    const std::uint64_t count = std::min(littleEndian(header, 80, 4), kMaxEntries);
    const std::uint64_t size = littleEndian(header, 84, 4);
    if (size < kGptEntrySize || size > kMaxEntrySize || block > UINT64_MAX / blockSize) return table;
    const std::string entries = read(block * blockSize, count * size);
    for (std::uint64_t i = 0; (i + 1) * size <= entries.size(); ++i) {
        const std::string_view entry = std::string_view(entries).substr(i * size, size);
        if (entry.substr(0, kGuidSize).find_first_not_of('\0') == std::string_view::npos) continue;
        constexpr unsigned kLegacyBoot = 4;
        const auto attributes = static_cast<unsigned char>(entry[48]);
        table.entries.push_back({static_cast<int>(i + 1), guid(entry), guid(entry.substr(kGuidSize)),
                                 name(entry.substr(56)), true, (attributes & kLegacyBoot) != 0,
                                 gptBlocks(entry)});
    }
    return table;
}

struct MbrEntry {
    unsigned status;
    unsigned type;
    std::uint64_t start;   // in blocks
    std::uint64_t blocks;  // its size

    bool isExtended() const { return type == 0x05 || type == 0x0F || type == 0x85; }
};

MbrEntry mbrEntry(std::string_view sector, std::size_t index) {
    const std::size_t at = kMbrEntries + index * kMbrEntrySize;
    return {static_cast<unsigned>(littleEndian(sector, at, 1)),
            static_cast<unsigned>(littleEndian(sector, at + 4, 1)), littleEndian(sector, at + 8, 4),
            littleEndian(sector, at + 12, 4)};
}

std::array<MbrEntry, 4> mbrEntries(std::string_view sector) {
    return {mbrEntry(sector, 0), mbrEntry(sector, 1), mbrEntry(sector, 2), mbrEntry(sector, 3)};
}

bool isMbr(std::string_view sector) {
    if (sector.size() < kMbrSize || !sector.substr(510).starts_with("\x55\xAA")) return false;
    // The boot sector of a file system has the same signature, but code or text in place of the entries.
    for (std::size_t i = 0; i < 4; ++i) {
        if ((mbrEntry(sector, i).status & 0x7FU) != 0) return false;
    }
    return true;
}

class DosTable {
  public:
    DosTable(const ReadDisk& read, std::uint64_t blockSize, std::string_view mbr)
        : read_(read), blockSize_(blockSize), signature_(hexAt(mbr, 440, 4)) {
        table_.type = "dos";
        const std::array<MbrEntry, 4> entries = mbrEntries(mbr);
        int partition = 0;
        for (const MbrEntry& entry : entries) {
            ++partition;
            if (entry.type != 0) add(entry, partition, true);
        }
        for (const MbrEntry& entry : entries) {
            if (entry.isExtended()) readLogical(entry.start);
        }
    }

    PartitionTable take() { return std::move(table_); }

  private:
    void add(const MbrEntry& entry, int partition, bool primary) {
        const std::string uuid = signature_ == "00000000"
                                     ? std::string()
                                     : signature_ + "-" + hexDigits(static_cast<unsigned>(partition), 2);
        table_.entries.push_back(
            {partition, hexDigits(entry.type, 2), uuid, {}, primary, entry.status == 0x80, entry.blocks});
    }

    // Each logical partition has its own sector, which also points to the next one.
    void readLogical(std::uint64_t extended) {
        std::uint64_t block = extended;
        for (int seen = 0; seen < kMaxLogical; ++seen) {
            const std::string sector = read_(block * blockSize_, kMbrSize);
            if (!isMbr(sector)) return;
            const MbrEntry logical = mbrEntry(sector, 0);
            if (logical.type != 0) add(logical, next_++, false);
            const MbrEntry next = mbrEntry(sector, 1);
            if (!next.isExtended() || next.start == 0) return;
            block = extended + next.start;
        }
    }

    const ReadDisk& read_;
    std::uint64_t blockSize_;
    std::string signature_;
    PartitionTable table_;
    int next_ = kFirstLogical;
};

}  // namespace

bool isExtendedPartition(std::string_view type) {
    return type == "05" || type == "0f" || type == "85";
}

PartitionTable readPartitionTable(const ReadDisk& read, std::uint64_t blockSize) {
    if (blockSize < kMbrSize || blockSize > 65536) return {};
    const std::string mbr = read(0, kMbrSize);
    if (!isMbr(mbr)) return {};
    const auto isProtective = [](const MbrEntry& entry) { return entry.type == kProtective; };
    if (std::ranges::any_of(mbrEntries(mbr), isProtective)) return readGpt(read, blockSize);
    return DosTable(read, blockSize, mbr).take();
}

}  // namespace toolkit::quorvah
