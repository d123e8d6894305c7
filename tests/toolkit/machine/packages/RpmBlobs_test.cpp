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

Result readAll(Reader reader, const std::string& bytes) {
    const BlobFile file{[&bytes](std::uint64_t offset, std::span<char> piece) {
                            if (offset > bytes.size() || piece.size() > bytes.size() - offset) return false;
                            std::copy_n(bytes.data() + offset, piece.size(), piece.data());
                            return true;
                        },
                        bytes.size()};
    Result result{BlobReading::Complete, {}};
    result.reading = reader(file, [&result](std::string_view blob) { result.blobs.emplace_back(blob); });
    return result;
}

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
    std::string file = ndbFile({"one"});
    file[4] = 1;
    EXPECT_EQ(BlobReading::Unsupported, readAll(readNdbBlobs, file).reading);
    EXPECT_EQ(BlobReading::Unsupported, readAll(readNdbBlobs, "RpmP").reading);
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
    std::string bytes = file.bytes();
    bytes[3 * BerkeleyFile::kPage + 25] = 1;  // the type of the second page of the first chain
    const Result result = readAll(readBerkeleyBlobs, bytes);
    EXPECT_EQ(BlobReading::Incomplete, result.reading);
    EXPECT_EQ(Blobs{std::string(100, 'b')}, result.blobs);
}

TEST(BerkeleyBlobs, ACircleOfPagesEnds) {
    BerkeleyFile file;
    file.add(std::string(1000, 'a'));
    std::string bytes = file.bytes();
    bytes.replace(3 * BerkeleyFile::kPage + 16, 4, bytesOf(2, 4));
    const Result result = readAll(readBerkeleyBlobs, bytes);
    ASSERT_EQ(1U, result.blobs.size());
    EXPECT_EQ(1000U, result.blobs.front().size());
}

TEST(BerkeleyBlobs, OfOtherFilesAreUnsupported) {
    std::string bytes = BerkeleyFile().bytes();
    EXPECT_EQ(BlobReading::Complete, readAll(readBerkeleyBlobs, bytes).reading);
    bytes[25] = 9;  // a B-tree
    EXPECT_EQ(BlobReading::Unsupported, readAll(readBerkeleyBlobs, bytes).reading);
    EXPECT_EQ(BlobReading::Unsupported, readAll(readBerkeleyBlobs, "text").reading);
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
