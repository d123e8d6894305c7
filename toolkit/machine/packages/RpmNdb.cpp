#include <array>
#include <string>

#include "toolkit/machine/packages/RpmBlobs.h"
#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit {

namespace {

// All numbers are little-endian and have 32 bits. The first pages are an array of slots; the header takes the place of the
// first two:
//     "RpmP", version, generation, number of pages with slots
//     "Slot", package, first block, number of blocks
// A blob lies in blocks of 16 bytes, with a header before it and a tail behind it:
//     "BlbS", package, generation, length; bytes; checksum, length, "BlbE"
constexpr std::size_t kPage = 4096;
constexpr std::size_t kHeader = 32;
constexpr std::size_t kSlot = 16;
constexpr std::size_t kBlock = 16;
constexpr std::size_t kBlobHeader = 16;
constexpr std::size_t kBlobTail = 12;
constexpr std::uint64_t kMinBlocks = 2;  // a header and a tail
constexpr std::uint64_t kMaxBlocks = std::uint64_t{2} << 20;

class Ndb {
  public:
    Ndb(const BlobFile& file, const BlobVisitor& visit) : file_(file), visit_(visit) {}

    BlobReading read() {
        std::array<char, kHeader> bytes{};
        if (!file_.read(0, bytes)) return BlobReading::Unsupported;
        const std::string_view header(bytes.data(), bytes.size());
        if (!header.starts_with("RpmP") || littleEndian(header, 4, 4) != 0) return BlobReading::Unsupported;
        const std::uint64_t pages = littleEndian(header, 12, 4);
        for (std::uint64_t page = 0; page < pages; ++page) {
            if (!readSlots(page)) return BlobReading::Incomplete;
        }
        return whole_ ? BlobReading::Complete : BlobReading::Incomplete;
    }

  private:
    bool readSlots(std::uint64_t page) {
        std::array<char, kPage> bytes{};
        if (!file_.read(page * kPage, bytes)) return false;
        std::string_view slots(bytes.data(), bytes.size());
        if (page == 0) slots.remove_prefix(kHeader);
        for (; !slots.empty(); slots.remove_prefix(kSlot)) {
            const std::uint64_t block = littleEndian(slots, 8, 4);
            if (block == 0) continue;  // it is free
            if (!slots.starts_with("Slot") ||
                !readBlob(littleEndian(slots, 4, 4), block, littleEndian(slots, 12, 4)))
                whole_ = false;
        }
        return true;
    }

    bool readBlob(std::uint64_t package, std::uint64_t block, std::uint64_t blocks) {
        if (blocks < kMinBlocks || blocks > kMaxBlocks || block + blocks > file_.size / kBlock) return false;
        blob_.resize(blocks * kBlock);
        if (!file_.read(block * kBlock, blob_)) return false;
        const std::string_view bytes = blob_;
        const std::uint64_t length = littleEndian(bytes, 12, 4);
        const bool its = bytes.starts_with("BlbS") && bytes.ends_with("BlbE") &&
                         littleEndian(bytes, 4, 4) == package &&
                         length <= bytes.size() - kBlobHeader - kBlobTail;
        if (its) visit_(bytes.substr(kBlobHeader, length));
        return its;
    }

    const BlobFile& file_;
    const BlobVisitor& visit_;
    std::string blob_;
    bool whole_ = true;
};

}  // namespace

BlobReading readNdbBlobs(const BlobFile& file, const BlobVisitor& visit) {
    return Ndb(file, visit).read();
}

}  // namespace toolkit
