#include "toolkit/quorvah/sources/PartitionTable.h"

#include <gtest/gtest.h>

using toolkit::quorvah::isExtendedPartition;
using toolkit::quorvah::PartitionTable;
using toolkit::quorvah::readPartitionTable;

namespace {

// A disk in memory, as large as what has been written to it.
class Disk {
  public:
    void put(std::size_t offset, const std::string& bytes) {
        if (bytes_.size() < offset + bytes.size()) bytes_.resize(offset + bytes.size(), '\0');
        bytes_.replace(offset, bytes.size(), bytes);
    }
    void putNumber(std::size_t offset, std::uint64_t number, std::size_t width) {
        std::string bytes;
        for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFFU);
        put(offset, bytes);
    }
    // An entry of a partition table sector, which begins at a block of 512 bytes.
    void putEntry(std::size_t block, std::size_t index, unsigned status, unsigned type, std::uint64_t start) {
        const std::size_t at = block * 512 + 446 + index * 16;
        putNumber(at, status, 1);
        putNumber(at + 1, 0xFFFFFE, 3);  // cylinder, head and sector, which nothing uses
        putNumber(at + 4, type, 1);
        putNumber(at + 5, 0xFFFFFE, 3);
        putNumber(at + 8, start, 4);
        putNumber(at + 12, 0xFFFFFFFF, 4);  // its size
        putNumber(block * 512 + 510, 0xAA55, 2);
    }
    PartitionTable table(std::uint64_t blockSize = 512) const {
        return readPartitionTable(
            [this](std::uint64_t offset, std::size_t size) {
                return offset < bytes_.size() ? bytes_.substr(offset, size) : std::string();
            },
            blockSize);
    }
    void cut(std::size_t size) { bytes_.resize(size); }
    std::size_t size() const { return bytes_.size(); }

  private:
    std::string bytes_;
};

constexpr std::size_t kEntries = 1024;  // where the entries of gptDisk(512) are
constexpr std::size_t kThird = kEntries + std::size_t{2} * 128;
constexpr std::size_t kName = 56;
constexpr char kTypeGuid[] = "\x28\x73\x2a\xc1\x1f\xf8\xd2\x11\xba\x4b\x00\xa0\xc9\x3e\xc9\x3b";

Disk gptDisk(std::size_t blockSize) {
    Disk disk;
    disk.putEntry(0, 0, 0, 0xEE, 1);
    disk.put(blockSize, "EFI PART");
    disk.putNumber(blockSize + 72, 2, 8);
    disk.putNumber(blockSize + 80, 128, 4);
    disk.putNumber(blockSize + 84, 128, 4);
    disk.putNumber(blockSize + 88, 0x89ABCDEF, 4);  // the checksum of the entries
    const std::size_t entry = 2 * blockSize + std::size_t{2} * 128;
    disk.put(entry, std::string(kTypeGuid, 16));
    disk.put(entry + 16, std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d\x0e\x0f\x10"));
    disk.putNumber(entry + 48, 4, 8);
    // "Aé€😀" in UTF-16
    const unsigned name[] = {0x41, 0xE9, 0x20AC, 0xD83D, 0xDE00};
    for (std::size_t i = 0; i < std::size(name); ++i) disk.putNumber(entry + 56 + 2 * i, name[i], 2);
    disk.put(2 * blockSize + std::size_t{128} * 128 - 1, std::string(1, '\0'));
    return disk;
}

std::vector<int> numbers(const PartitionTable& table) {
    std::vector<int> found;
    for (const auto& entry : table.entries) found.push_back(entry.number);
    return found;
}

std::string nameOf(std::initializer_list<unsigned> units) {
    Disk disk = gptDisk(512);
    disk.put(kThird + kName, std::string(72, '\0'));
    std::size_t at = kThird + kName;
    for (const unsigned unit : units) {
        disk.putNumber(at, unit, 2);
        at += 2;
    }
    return disk.table().entries.at(0).name;
}

}  // namespace

TEST(PartitionTable, ReadsAGptWhateverTheBlockSize) {
    for (const std::size_t blockSize : {std::size_t{512}, std::size_t{4096}}) {
        const PartitionTable table = gptDisk(blockSize).table(blockSize);
        EXPECT_EQ(table.type, "gpt");
        ASSERT_EQ(table.entries.size(), 1U);
        EXPECT_EQ(table.entries[0].number, 3);
        EXPECT_EQ(table.entries[0].type, "c12a7328-f81f-11d2-ba4b-00a0c93ec93b");
        EXPECT_EQ(table.entries[0].uuid, "04030201-0605-0807-090a-0b0c0d0e0f10");
        EXPECT_EQ(table.entries[0].name, "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
        EXPECT_TRUE(table.entries[0].primary);
        EXPECT_TRUE(table.entries[0].bootable);
    }
}

TEST(PartitionTable, EntriesStateTheirSize) {
    Disk gpt = gptDisk(512);
    gpt.putNumber(kThird + 32, 2048, 8);
    gpt.putNumber(kThird + 40, 4095, 8);
    EXPECT_EQ(gpt.table().entries.at(0).blocks, 2048U);
    gpt.putNumber(kThird + 40, 2047, 8);
    EXPECT_EQ(gpt.table().entries.at(0).blocks, 0U);
    Disk mbr;
    mbr.putEntry(0, 0, 0, 0x0F, 2048);
    mbr.putNumber(446 + 12, 4096, 4);
    EXPECT_EQ(mbr.table().entries.at(0).blocks, 4096U);
    EXPECT_TRUE(isExtendedPartition(mbr.table().entries.at(0).type));
}

TEST(PartitionTable, NamesAreUtf16) {
    EXPECT_EQ(nameOf({0x01, 0x7F, 0x80}), "\x01\x7F\xC2\x80");
    EXPECT_EQ(nameOf({0x7FF, 0x800, 0xD7FF}), "\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF");
    EXPECT_EQ(nameOf({0xE000, 0xFFFF}), "\xEE\x80\x80\xEF\xBF\xBF");
    EXPECT_EQ(nameOf({0xD800, 0xDC00}), "\xF0\x90\x80\x80");
    EXPECT_EQ(nameOf({0xDBFF, 0xDFFF}), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(nameOf({0x41, 0, 0x42}), "A") << "a zero ends it";
}

TEST(PartitionTable, LeavesHalfCharactersOutOfAName) {
    EXPECT_EQ(nameOf({0xDC00, 0x41, 0xD800, 0x42, 0xD800}), "AB");
    EXPECT_EQ(nameOf({0xD800, 0x41, 0xDC00}), "A") << "halves that do not meet";
    EXPECT_EQ(nameOf({0xD800, 0xD800, 0xDC00, 0xDC00}), "\xF0\x90\x80\x80");
}

TEST(PartitionTable, ANameEndsWithItsEntry) {
    Disk disk = gptDisk(512);
    for (std::size_t i = 0; i < 36; ++i) disk.putNumber(kThird + kName + 2 * i, 'a', 2);
    disk.put(kThird + 128, std::string(128, 'x'));
    EXPECT_EQ(disk.table().entries.at(0).name, std::string(36, 'a'));
}

TEST(PartitionTable, ANameHas36UnitsInALongerEntry) {
    Disk disk = gptDisk(512);
    disk.putNumber(512 + 84, 256, 4);
    for (std::size_t i = 0; i < 40; ++i) disk.putNumber(kThird + kName + 2 * i, 'a', 2);
    EXPECT_EQ(disk.table().entries.at(0).name, std::string(36, 'a'));
}

TEST(PartitionTable, AGptEntryIsOneWhoseTypeIsNotZero) {
    Disk disk = gptDisk(512);
    disk.put(kThird, std::string(16, '\0'));
    EXPECT_EQ(numbers(disk.table()), std::vector<int>{}) << "its other fields do not matter";
    disk.putNumber(kThird + 15, 1, 1);
    EXPECT_EQ(numbers(disk.table()), std::vector{3});
    disk.putNumber(kThird + 15, 0, 1);
    disk.putNumber(kThird, 1, 1);
    EXPECT_EQ(numbers(disk.table()), std::vector{3});
}

TEST(PartitionTable, OnlyOneAttributeMakesAGptEntryBootable) {
    Disk disk = gptDisk(512);
    disk.putNumber(kThird + 48, ~std::uint64_t{4}, 8);
    EXPECT_FALSE(disk.table().entries.at(0).bootable);
}

TEST(PartitionTable, AGptHasAsManyEntriesAsItSays) {
    Disk disk = gptDisk(512);
    disk.put(kEntries, std::string(std::size_t{1100} * 128, 'x'));
    EXPECT_EQ(disk.table().entries.size(), 128U);
    EXPECT_EQ(disk.table().entries.back().number, 128);
    disk.putNumber(512 + 80, 3, 4);
    EXPECT_EQ(numbers(disk.table()), (std::vector{1, 2, 3}));
    disk.putNumber(512 + 80, 1100, 4);
    EXPECT_EQ(disk.table().entries.size(), 1024U) << "more than any tool makes";
    disk.putNumber(512 + 80, 0x01000000, 4);
    EXPECT_EQ(disk.table().entries.size(), 1024U);
}

TEST(PartitionTable, AGptTellsTheSizeOfItsEntries) {
    const std::pair<std::size_t, int> cases[] = {{127, 0},  {128, 2},  {256, 2},
                                                 {4096, 2}, {4097, 0}, {0x1000080, 0}};
    for (const auto& [size, count] : cases) {
        Disk disk = gptDisk(512);
        disk.put(kEntries, std::string(std::size_t{8200}, '\0'));
        disk.putNumber(512 + 80, 2, 4);
        disk.putNumber(512 + 84, size, 4);
        disk.put(kEntries, kTypeGuid);
        disk.put(kEntries + (size & 0xFFFFU), kTypeGuid);
        EXPECT_EQ(disk.table().entries.size(), static_cast<std::size_t>(count)) << size;
        EXPECT_EQ(disk.table().type, "gpt");
    }
}

TEST(PartitionTable, EntriesBeyondAnyDiskAreNotRead) {
    for (const std::uint64_t block : {std::uint64_t{1} << 55U, std::uint64_t{1} << 56U}) {
        Disk disk = gptDisk(512);
        disk.putNumber(512 + 72, block, 8);  // times 512 it is 0 again
        EXPECT_EQ(disk.table().entries.size(), 0U);
    }
}

TEST(PartitionTable, ReadsPrimaryAndLogicalPartitionsOfAnMbr) {
    Disk disk;
    disk.putNumber(440, 0x9a8b7c6d, 4);
    disk.putEntry(0, 0, 0x80, 0x83, 2048);
    disk.putEntry(0, 2, 0, 0x0F, 100);
    disk.putEntry(100, 0, 0, 0x82, 1);
    disk.putEntry(100, 1, 0, 0x05, 50);
    disk.putEntry(150, 0, 0, 0x07, 1);
    const PartitionTable table = disk.table();
    EXPECT_EQ(table.type, "dos");
    ASSERT_EQ(table.entries.size(), 4U);
    const std::tuple<int, const char*, const char*, bool, bool> expected[] = {
        {1, "83", "9a8b7c6d-01", true, true},
        {3, "0f", "9a8b7c6d-03", true, false},
        {5, "82", "9a8b7c6d-05", false, false},
        {6, "07", "9a8b7c6d-06", false, false}};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [number, type, uuid, primary, bootable] = expected[i];
        EXPECT_EQ(table.entries[i].number, number);
        EXPECT_EQ(table.entries[i].type, type);
        EXPECT_EQ(table.entries[i].uuid, uuid);
        EXPECT_EQ(table.entries[i].primary, primary);
        EXPECT_EQ(table.entries[i].bootable, bootable);
    }
}

TEST(PartitionTable, AnMbrWithoutSignatureHasNoPartitionIds) {
    Disk disk;
    disk.putEntry(0, 0, 0, 0x83, 2048);
    EXPECT_EQ(disk.table().entries.at(0).uuid, "");
    disk.putNumber(440, 1, 4);
    EXPECT_EQ(disk.table().entries.at(0).uuid, "00000001-01");
}

TEST(PartitionTable, EachTypeOfExtendedPartitionHoldsLogicalOnes) {
    for (const unsigned type : {0x05U, 0x0FU, 0x85U}) {
        Disk disk;
        disk.putEntry(0, 3, 0, type, 100);
        disk.putEntry(100, 0, 0, 0x83, 1);
        EXPECT_EQ(numbers(disk.table()), (std::vector{4, 5})) << type;
    }
}

TEST(PartitionTable, AChainOfLogicalPartitionsEnds) {
    Disk disk;
    disk.putEntry(0, 0, 0, 0x05, 100);
    disk.putEntry(100, 0, 0, 0x83, 1);
    disk.putEntry(100, 1, 0, 0x05, 0);
    EXPECT_EQ(numbers(disk.table()), (std::vector{1, 5})) << "where no next one is";
    disk.putEntry(100, 1, 0, 0x83, 10);
    disk.putEntry(110, 0, 0, 0x83, 1);
    EXPECT_EQ(numbers(disk.table()), (std::vector{1, 5})) << "where the next one is of another type";
    disk.putEntry(100, 1, 0, 0x05, 10);
    disk.put(110 * 512 + 510, "no");
    EXPECT_EQ(numbers(disk.table()), (std::vector{1, 5})) << "where the next one is damaged";
    disk.putEntry(110, 0, 0, 0x83, 1);
    EXPECT_EQ(numbers(disk.table()), (std::vector{1, 5, 6}));
    disk.putEntry(100, 0, 0, 0, 0);
    EXPECT_EQ(numbers(disk.table()), (std::vector{1, 5})) << "the first sector describes none";
    disk.putEntry(0, 0, 0, 0x05, 0x01000064);
    EXPECT_EQ(numbers(disk.table()), std::vector{1}) << "it begins behind the end of the disk";
}

TEST(PartitionTable, AChainThatLeadsBackToItselfEnds) {
    Disk disk;
    disk.putEntry(0, 0, 0, 0x05, 100);
    disk.putEntry(100, 0, 0, 0x83, 1);
    disk.putEntry(100, 1, 0, 0x05, 10);
    disk.putEntry(110, 0, 0, 0x83, 1);
    disk.putEntry(110, 1, 0, 0x05, 10);
    EXPECT_EQ(disk.table().entries.size(), 1U + 256U);
}

TEST(PartitionTable, WhatIsNoTableHasNoPartitions) {
    EXPECT_EQ(Disk().table().type, "");
    Disk text;
    text.put(0, std::string(512, 'x'));
    EXPECT_EQ(text.table().type, "");
    text.putNumber(510, 0xAA55, 2);
    EXPECT_EQ(text.table().type, "") << "the boot sector of a file system ends alike";
    Disk protective;
    protective.putEntry(0, 0, 0, 0xEE, 1);
    EXPECT_EQ(protective.table().type, "") << "the header that the entry announces is missing";
}

TEST(PartitionTable, BlocksOfAnotherSizeThanDisksHaveAreRefused) {
    const std::pair<std::uint64_t, const char*> cases[] = {{0, ""},        {511, ""},   {512, "dos"},
                                                           {65536, "dos"}, {65537, ""}, {1 << 20, ""}};
    Disk disk;
    disk.putEntry(0, 0, 0, 0x83, 2048);
    for (const auto& [size, type] : cases) EXPECT_EQ(disk.table(size).type, type) << size;
}

TEST(PartitionTable, EveryEntryOfAnMbrIsLookedAt) {
    for (std::size_t index = 0; index < 4; ++index) {
        Disk disk;
        disk.putEntry(0, index, 0x01, 0x83, 2048);
        EXPECT_EQ(disk.table().type, "") << "no status that an entry can have";
        disk.putEntry(0, index, 0x80, 0x83, 2048);
        EXPECT_EQ(numbers(disk.table()), std::vector{static_cast<int>(index + 1)});
        disk.putEntry(0, index, 0, 0xEE, 1);
        disk.put(512, "EFI PART");
        disk.put(1023, std::string(1, '\0'));
        EXPECT_EQ(disk.table().type, "gpt");
    }
}

TEST(PartitionTable, AHeaderOrSectorThatIsCutIsNone) {
    Disk disk = gptDisk(512);
    disk.cut(512 + 92);
    EXPECT_EQ(disk.table().type, "gpt");
    disk.cut(512 + 91);
    EXPECT_EQ(disk.table().type, "");
    Disk dos;
    dos.putEntry(0, 0, 0, 0x83, 2048);
    EXPECT_EQ(dos.table().type, "dos");
    dos.cut(511);
    EXPECT_EQ(dos.table().type, "");
}

TEST(PartitionTable, EveryCutOfADiskIsTaken) {
    const Disk whole = gptDisk(512);
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        Disk cut = whole;
        cut.cut(size);
        EXPECT_EQ(cut.table().entries.size(), size < kThird + 128 ? 0U : 1U) << size;
    }
}

TEST(PartitionTable, AHeaderThatLiesReadsNoMoreThanADiskCanHold) {
    for (const std::size_t field : {std::size_t{72}, std::size_t{80}, std::size_t{84}}) {
        Disk disk = gptDisk(512);
        disk.putNumber(512 + field, UINT64_MAX, field == 72 ? 8 : 4);
        EXPECT_LE(disk.table().entries.size(), 1024U);
    }
}
