#include "toolkit/machine/packages/RpmBlobs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/toolkit/machine/packages/RpmOldDatabases.h"

namespace toolkit {
namespace {

using Blobs = std::vector<std::string>;
using Reader = BlobReading (*)(const BlobFile&, const BlobVisitor&);

struct Result {
    BlobReading reading;
    Blobs blobs;
};

Result readAll(Reader reader, const BlobFile& file) {
    Result result{BlobReading::Complete, {}};
    result.reading = reader(file, [&result](std::string_view blob) { result.blobs.emplace_back(blob); });
    return result;
}

// A file that says that it has this size.
BlobFile fileOf(const std::string& bytes, std::uint64_t size) {
    return {[&bytes](std::uint64_t offset, std::span<char> piece) {
                if (offset > bytes.size() || piece.size() > bytes.size() - offset) return false;
                std::copy_n(bytes.data() + offset, piece.size(), piece.data());
                return true;
            },
            size};
}

Result readAll(Reader reader, const std::string& bytes) {
    return readAll(reader, fileOf(bytes, bytes.size()));
}

std::string patched(std::string file, std::size_t offset, std::string_view bytes) {
    return file.replace(offset, bytes.size(), bytes);
}

// No blob is visited, and the reader says that one is missing.
void expectRefused(Reader reader, const BlobFile& file, const std::string& what) {
    const Result result = readAll(reader, file);
    EXPECT_EQ(BlobReading::Incomplete, result.reading) << what;
    EXPECT_TRUE(result.blobs.empty()) << what;
}

void expectRefused(Reader reader, const std::string& bytes, const std::string& what) {
    expectRefused(reader, fileOf(bytes, bytes.size()), what);
}

struct Patch {
    std::string what;
    std::size_t offset;
    std::string bytes;
};

TEST(NdbBlobs, AreRead) {
    const Blobs blobs = {"one", std::string(5000, 'x'), ""};
    const Result result = readAll(readNdbBlobs, ndbFile(blobs));
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_EQ(blobs, result.blobs);
    EXPECT_EQ(BlobReading::Complete, readAll(readNdbBlobs, ndbFile({})).reading);
}

TEST(NdbBlobs, ADamagedOneCostsNoOther) {
    std::string file = ndbFile({"one", "two", "three"});
    file.replace(file.find("BlbS", file.find("BlbS") + 1), 4, "Xxxx");
    const Result result = readAll(readNdbBlobs, file);
    EXPECT_EQ(BlobReading::Incomplete, result.reading);
    EXPECT_EQ((Blobs{"one", "three"}), result.blobs);
}

TEST(NdbBlobs, OfAnotherVersionAreUnsupported) {
    const std::string file = ndbFile({"one"});
    EXPECT_EQ(BlobReading::Unsupported, readAll(readNdbBlobs, patched(file, 4, bytesOf(1, 4))).reading);
    EXPECT_EQ(BlobReading::Unsupported,
              readAll(readNdbBlobs, patched(file, 4, bytesOf(0x01000000, 4))).reading);
    EXPECT_EQ(BlobReading::Unsupported, readAll(readNdbBlobs, "RpmP").reading);
}

TEST(NdbBlobs, MayHaveAnySlotOfAnyPage) {
    const Blobs blobs = {"first slot", "last of its page", "first of the next page", "last"};
    const Result result = readAll(readNdbBlobs, ndbFile(blobs, {2, 255, 256, 511}, 2));
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_EQ(blobs, result.blobs);
}

TEST(NdbBlobs, OfPagesBeyondTheFileAreMissing) {
    const Result result = readAll(readNdbBlobs, patched(ndbFile({"one"}), 12, bytesOf(0x01000001, 4)));
    EXPECT_EQ(BlobReading::Incomplete, result.reading);
    EXPECT_EQ(Blobs{"one"}, result.blobs);
}

TEST(NdbBlobs, MayFillTheirBlocksButAreRefusedWithWrongNumbers) {
    constexpr std::size_t kSlot = 32;
    constexpr std::size_t kBlob = 4096;
    const std::string file = ndbFile({"four"});
    ASSERT_EQ(kBlob + 2 * 16, file.size());
    EXPECT_EQ(Blobs{"four"}, readAll(readNdbBlobs, file).blobs);
    const Patch patches[] = {
        {"no slot", kSlot, "Xlot"},
        {"slot of another package", kSlot + 4, bytesOf(2, 4)},
        {"no block", kSlot + 12, bytesOf(0, 4)},
        {"more blocks than the file has", kSlot + 12, bytesOf(3, 4)},
        {"far more blocks", kSlot + 12, bytesOf(0x01000002, 4)},
        {"blob of another package", kBlob + 4, bytesOf(2, 4)},
        {"length beyond the blocks", kBlob + 12, bytesOf(5, 4)},
        {"length far beyond the blocks", kBlob + 12, bytesOf(0x01000004, 4)},
        {"no end", kBlob + 28, "XlbE"},
    };
    for (const auto& [what, offset, bytes] : patches)
        expectRefused(readNdbBlobs, patched(file, offset, bytes), what);
}

TEST(NdbBlobs, HaveMoreThanOneBlock) {
    std::string file = patched(ndbFile({"four"}), 32 + 12, bytesOf(1, 4));
    file.replace(4096 + 12, 4, "BlbE");
    expectRefused(readNdbBlobs, file, "one block that begins and ends like a blob");
}

TEST(NdbBlobs, HaveAtMost32MiBWithTheirHeaderAndTail) {
    const std::string largest((std::size_t{32} << 20) - 28, 'x');
    const Result result = readAll(readNdbBlobs, ndbFile({largest, "two"}));
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_TRUE((Blobs{largest, "two"}) == result.blobs);
    const Result beyond = readAll(readNdbBlobs, ndbFile({largest + "x", "two"}));
    EXPECT_EQ(BlobReading::Incomplete, beyond.reading);
    EXPECT_TRUE(Blobs{"two"} == beyond.blobs);
}

TEST(NdbBlobs, MayHaveNumbersOf32Bits) {
    constexpr std::uint64_t kBlock = 0x01000000;
    constexpr std::uint64_t kPackage = 0x01000001;
    std::string slots = ndbFile({"four"});
    slots.replace(32 + 4, 8, bytesOf(kPackage, 4) + bytesOf(kBlock, 4));
    const std::string blob = patched(slots.substr(4096), 4, bytesOf(kPackage, 4));
    const BlobFile head = fileOf(slots, slots.size());
    const BlobFile tail = fileOf(blob, blob.size());
    const BlobFile file{[&](std::uint64_t offset, std::span<char> piece) {
                            return offset < kBlock * 16 ? head.read(offset, piece)
                                                        : tail.read(offset - kBlock * 16, piece);
                        },
                        kBlock * 16 + blob.size()};
    const Result result = readAll(readNdbBlobs, file);
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_EQ(Blobs{"four"}, result.blobs);
}

TEST(NdbBlobs, OneThatCannotBeReadCostsNoOther) {
    const std::string bytes = ndbFile({"one", "two", "three"});
    const BlobFile readable = fileOf(bytes, bytes.size());
    const std::uint64_t second = bytes.find("BlbS", 4096 + 4);
    const BlobFile file{[&](std::uint64_t offset, std::span<char> piece) {
                            return offset != second && readable.read(offset, piece);
                        },
                        bytes.size()};
    const Result result = readAll(readNdbBlobs, file);
    EXPECT_EQ(BlobReading::Incomplete, result.reading);
    EXPECT_EQ((Blobs{"one", "three"}), result.blobs);
}

TEST(NdbBlobs, BeyondTheSizeOfTheFileAreNotRead) {
    const std::string bytes = ndbFile({"one", "two"});
    const Result result = readAll(readNdbBlobs, fileOf(bytes, bytes.size() - 1));
    EXPECT_EQ(BlobReading::Incomplete, result.reading);
    EXPECT_EQ(Blobs{"one"}, result.blobs);
}

// Offsets in a Berkeley DB file with pages of 512 bytes.
constexpr std::size_t kHashPage = BerkeleyFile::kPage;
constexpr std::size_t kFirstChainPage = 2 * BerkeleyFile::kPage;
constexpr std::size_t kType = 25;
constexpr std::size_t kOffsets = kHashPage + BerkeleyFile::kPageHeader;
constexpr std::size_t kRoom = BerkeleyFile::kPage - BerkeleyFile::kPageHeader;

// A stored value that is large.
std::string largeEntry(std::size_t page, std::size_t length) {
    return std::string("\3\0\0\0", 4) + bytesOf(page, 4) + bytesOf(length, 4);
}

TEST(BerkeleyBlobs, AreReadInBothByteOrders) {
    const Blobs blobs = {"short one", std::string(400, 'a'), std::string(2000, 'b')};
    for (const bool little : {true, false}) {
        BerkeleyFile file(little);
        for (const std::string& blob : blobs) file.add(blob);
        const Result result = readAll(readBerkeleyBlobs, file.bytes());
        EXPECT_EQ(BlobReading::Complete, result.reading) << little;
        EXPECT_EQ(blobs, result.blobs) << little;
    }
}

TEST(BerkeleyBlobs, AChainThatIsDamagedCostsNoOther) {
    BerkeleyFile file;
    file.add(std::string(1000, 'a'));
    file.add(std::string(100, 'b'));
    const std::size_t secondPage = kFirstChainPage + BerkeleyFile::kPage;
    const Result result = readAll(readBerkeleyBlobs, patched(file.bytes(), secondPage + kType, "\1"));
    EXPECT_EQ(BlobReading::Incomplete, result.reading);
    EXPECT_EQ(Blobs{std::string(100, 'b')}, result.blobs);
}

TEST(BerkeleyBlobs, ACircleOfPagesEnds) {
    BerkeleyFile file;
    file.add(std::string(1000, 'a'));
    const std::string bytes =
        patched(file.bytes(), kFirstChainPage + BerkeleyFile::kPage + 16, bytesOf(2, 4));
    const Result result = readAll(readBerkeleyBlobs, bytes);
    ASSERT_EQ(1U, result.blobs.size());
    EXPECT_EQ(1000U, result.blobs.front().size());
}

TEST(BerkeleyBlobs, OfOtherFilesAreUnsupported) {
    for (const bool little : {true, false}) {
        const std::string bytes = BerkeleyFile(little).bytes();
        EXPECT_EQ(BlobReading::Complete, readAll(readBerkeleyBlobs, bytes).reading);
        const Patch patches[] = {
            {"another magic number", 12, bytesOf(0x01061561, 4, little)},
            {"encrypted", 24, "\1"},
            {"a B-tree", kType, "\x09"},
        };
        for (const auto& [what, offset, patch] : patches)
            EXPECT_EQ(BlobReading::Unsupported,
                      readAll(readBerkeleyBlobs, patched(bytes, offset, patch)).reading)
                << what;
    }
}

TEST(BerkeleyBlobs, MayLieInPagesOf512BytesTo64KiB) {
    const Blobs blobs = {"short one", std::string(3000, 'a')};
    for (const std::size_t size : {512U, 4096U, 65536U}) {
        BerkeleyFile file(true, size);
        for (const std::string& blob : blobs) file.add(blob);
        const Result result = readAll(readBerkeleyBlobs, file.bytes());
        EXPECT_EQ(BlobReading::Complete, result.reading) << size;
        EXPECT_EQ(blobs, result.blobs) << size;
    }
    for (const std::size_t size : {256U, 768U, 131072U})
        EXPECT_EQ(BlobReading::Unsupported,
                  readAll(readBerkeleyBlobs, BerkeleyFile(true, size).bytes()).reading)
            << size;
}

TEST(BerkeleyBlobs, AFileMayHaveNothingButItsFirstPage) {
    const std::string meta =
        patched(BerkeleyFile().bytes().substr(0, BerkeleyFile::kPage), 32, bytesOf(0, 4));
    EXPECT_EQ(BlobReading::Complete, readAll(readBerkeleyBlobs, meta).reading);
    EXPECT_EQ(BlobReading::Unsupported, readAll(readBerkeleyBlobs, meta.substr(0, meta.size() - 1)).reading);
    const std::string ofLargerPage = patched(meta, 20, bytesOf(1024, 4));
    EXPECT_EQ(BlobReading::Incomplete, readAll(readBerkeleyBlobs, ofLargerPage).reading);
}

TEST(BerkeleyBlobs, AreReadFromOldAndNewPagesOfTheHashOnly) {
    BerkeleyFile file;
    file.add("a value");
    const std::pair<char, Blobs> types[] = {{2, {"a value"}}, {13, {"a value"}}, {5, {}}};
    for (const auto& [type, blobs] : types) {
        const Result result =
            readAll(readBerkeleyBlobs, patched(file.bytes(), kHashPage + kType, std::string(1, type)));
        EXPECT_EQ(BlobReading::Complete, result.reading) << int{type};
        EXPECT_EQ(blobs, result.blobs) << int{type};
    }
}

TEST(BerkeleyBlobs, AreLongerThanANumber) {
    BerkeleyFile file;
    for (const char* value : {"", "four", "fives", "sixsix"}) file.add(value);
    const Result result = readAll(readBerkeleyBlobs, file.bytes());
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_EQ((Blobs{"fives", "sixsix"}), result.blobs);
}

TEST(BerkeleyBlobs, AKeyWithoutValueIsPassedOver) {
    BerkeleyFile file;
    file.add("a value");
    const Result result = readAll(readBerkeleyBlobs, patched(file.bytes(), kHashPage + 20, bytesOf(5, 2)));
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_EQ(Blobs{"a value"}, result.blobs);
}

TEST(BerkeleyBlobs, APageWithMoreEntriesThanItHoldsIsDamaged) {
    BerkeleyFile file;
    file.add("a value");
    for (const std::uint64_t entries : {244U, 65535U})
        expectRefused(readBerkeleyBlobs, patched(file.bytes(), kHashPage + 20, bytesOf(entries, 2)),
                      std::to_string(entries));
}

TEST(BerkeleyBlobs, BeginBehindTheOffsetsOfTheirPage) {
    BerkeleyFile file;
    file.add("a value");
    std::string bytes = patched(file.bytes(), kHashPage + 20, bytesOf(5, 2));
    const std::size_t behind = BerkeleyFile::kPageHeader + 5 * 2;
    bytes.replace(kHashPage + behind - 1, 2, "\1\1");  // the kind of an entry, at both places
    const Result first = readAll(readBerkeleyBlobs, patched(bytes, kOffsets + 6, bytesOf(behind, 2)));
    EXPECT_EQ(BlobReading::Complete, first.reading);
    EXPECT_EQ(1U, first.blobs.size());
    expectRefused(readBerkeleyBlobs, patched(bytes, kOffsets + 6, bytesOf(behind - 1, 2)), "among offsets");
}

TEST(BerkeleyBlobs, EndBehindTheirBeginningAndInTheirPage) {
    BerkeleyFile file;
    file.add("a value");
    const std::string bytes = file.bytes();
    const std::size_t key = kOffsets + 4;
    const Result toTheEnd = readAll(readBerkeleyBlobs, patched(bytes, key, bytesOf(BerkeleyFile::kPage, 2)));
    EXPECT_EQ(BlobReading::Complete, toTheEnd.reading);
    EXPECT_EQ(1U, toTheEnd.blobs.size());
    const Patch patches[] = {
        {"ends where it begins", key, bytes.substr(kOffsets + 6, 2)},
        {"ends before it begins", key, bytesOf(40, 2)},
        {"ends beyond its page", key, bytesOf(BerkeleyFile::kPage + 1, 2)},
    };
    for (const auto& [what, offset, end] : patches)
        expectRefused(readBerkeleyBlobs, patched(bytes, offset, end), what);
}

TEST(BerkeleyBlobs, OfUnknownKindOrWithoutTheirLengthAreDamaged) {
    const std::string large(100, 'a');
    std::string otherKind = largeEntry(2, large.size());
    otherKind.front() = 2;
    for (const std::string& entry : {otherKind, largeEntry(2, large.size()).substr(0, 11)}) {
        BerkeleyFile file;
        file.add(large);
        file.addEntries(std::string(5, '\0'), entry);
        const Result result = readAll(readBerkeleyBlobs, file.bytes());
        EXPECT_EQ(BlobReading::Incomplete, result.reading);
        EXPECT_EQ(Blobs{large}, result.blobs);
    }
}

TEST(BerkeleyBlobs, PagesOfAChainHaveOneByteToAll) {
    const Blobs blobs = {std::string(kRoom, 'a'), std::string(kRoom + 1, 'b')};
    BerkeleyFile file;
    for (const std::string& blob : blobs) file.add(blob);
    const Result result = readAll(readBerkeleyBlobs, file.bytes());
    EXPECT_EQ(BlobReading::Complete, result.reading);
    EXPECT_EQ(blobs, result.blobs);
}

TEST(BerkeleyBlobs, OfADamagedChainAreNotVisited) {
    BerkeleyFile file;
    file.add(std::string(2 * kRoom, 'a'));
    const std::string whole = file.bytes();
    const Patch patches[] = {
        {"a chain that ends early", kFirstChainPage + 16, bytesOf(0, 4)},
        {"a page without bytes", kFirstChainPage + 22, bytesOf(0, 2)},
        {"more bytes than a page has", kFirstChainPage + 22, bytesOf(kRoom + 1, 2)},
        {"a page of another type", kFirstChainPage + kType, "\1"},
        {"a chain from the first page of the file", whole.find(largeEntry(2, 2 * kRoom)) + 4, bytesOf(0, 4)},
        {"a page beyond the last one", 32, bytesOf(2, 4)},
    };
    for (const auto& [what, offset, bytes] : patches)
        expectRefused(readBerkeleyBlobs, patched(whole, offset, bytes), what);
}

TEST(BerkeleyBlobs, HaveAtMost32MiBAndTheSizeOfTheFile) {
    constexpr std::size_t kPageSize = 65536;
    constexpr std::uint64_t k32MiB = std::uint64_t{32} << 20;
    BerkeleyFile file(true, kPageSize);
    file.add(std::string(kPageSize - BerkeleyFile::kPageHeader, 'a'));
    // The page of the chain is followed by itself, so that the chain is long enough for every length.
    const std::string circle = patched(file.bytes(), 2 * kPageSize + 16, bytesOf(2, 4));
    const std::size_t lengthAt = circle.find(largeEntry(2, kPageSize - BerkeleyFile::kPageHeader)) + 8;
    const std::pair<std::uint64_t, std::uint64_t> limits[] = {{circle.size(), circle.size()},
                                                              {2 * k32MiB, k32MiB}};
    for (const auto& [fileSize, most] : limits) {
        const std::string longest = patched(circle, lengthAt, bytesOf(most, 4));
        const Result result = readAll(readBerkeleyBlobs, fileOf(longest, fileSize));
        EXPECT_EQ(BlobReading::Complete, result.reading) << most;
        ASSERT_EQ(1U, result.blobs.size()) << most;
        EXPECT_EQ(most, result.blobs.front().size());
        const std::string beyond = patched(circle, lengthAt, bytesOf(most + 1, 4));
        expectRefused(readBerkeleyBlobs, fileOf(beyond, fileSize), std::to_string(most + 1));
    }
}

TEST(OldRpmDatabases, ThatAreCutGiveTheBlobsBeforeTheirEnd) {
    BerkeleyFile file;
    file.add(std::string(600, 'a'));
    const std::pair<Reader, std::string> files[] = {{readNdbBlobs, ndbFile({"one", std::string(600, 'a')})},
                                                    {readBerkeleyBlobs, file.bytes()}};
    for (const auto& [reader, whole] : files) {
        for (std::size_t size = 0; size < whole.size(); size += 13) {
            const Result result = readAll(reader, whole.substr(0, size));
            EXPECT_NE(BlobReading::Complete, result.reading) << size;
            for (const std::string& blob : result.blobs) EXPECT_NE(whole.find(blob), std::string::npos);
        }
    }
}

}  // namespace
}  // namespace toolkit
