#include <algorithm>
#include <array>
#include <bit>
#include <string>

#include "toolkit/machine/packages/RpmBlobs.h"
#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit {

namespace {

// Every page begins with a header:
//     8 bytes of log position, page (32 bits), previous, next, entries (16 bits), bytes in use, level (8 bits), type
// A page of the hash is followed by the offsets (16 bits) of its entries, keys and values in turn, which are stored from the end
// of the page downwards. An entry is a byte that tells its kind, and its bytes; or, if it is large, 3 bytes, the first page
// of a chain (32 bits) and the length.
constexpr std::size_t kPageHeader = 26;
constexpr std::size_t kNextPage = 16;
constexpr std::size_t kEntries = 20;
constexpr std::size_t kBytesInUse = 22;
constexpr std::size_t kType = 25;
constexpr std::size_t kTwoOffsets = 4;

constexpr std::uint64_t kHashMagic = 0x061561;
constexpr char kHashMeta = 8;
constexpr char kOldHashPage = 2;
constexpr char kHashPage = 13;
constexpr char kChainPage = 7;

constexpr char kInline = 1;
constexpr char kLarge = 3;
constexpr std::size_t kLargeSize = 12;

constexpr std::size_t kMinPage = 512;
constexpr std::size_t kMaxPage = std::size_t{1} << 16;
constexpr std::uint64_t kMaxBlob = std::uint64_t{32} << 20;
// A value of this size is a number that rpm keeps, not a header.
constexpr std::size_t kNumberSize = 4;

class Berkeley {
  public:
    Berkeley(const BlobFile& file, const BlobVisitor& visit) : file_(file), visit_(visit) {}

    BlobReading read() {
        if (!readMeta()) return BlobReading::Unsupported;
        for (std::uint64_t page = 0; page <= lastPage_; ++page) {
            if (!file_.read(page * pageSize_, page_)) return BlobReading::Incomplete;
            const char type = page_[kType];
            if ((type == kHashPage || type == kOldHashPage) && !readEntries()) whole_ = false;
        }
        return whole_ ? BlobReading::Complete : BlobReading::Incomplete;
    }

  private:
    bool readMeta() {
        constexpr std::size_t kMagic = 12;
        std::array<char, kMinPage> bytes{};
        if (!file_.read(0, bytes)) return false;
        const std::string_view meta(bytes.data(), bytes.size());
        little_ = littleEndian(meta, kMagic, 4) == kHashMagic;
        if (!little_ && bigEndian(meta, kMagic, 4) != kHashMagic) return false;
        pageSize_ = numberIn(meta, 20, 4);
        lastPage_ = numberIn(meta, 32, 4);
        if (pageSize_ < kMinPage || pageSize_ > kMaxPage || !std::has_single_bit(pageSize_)) return false;
        const bool encrypted = meta[24] != 0;
        if (encrypted || meta[kType] != kHashMeta) return false;
        page_.resize(pageSize_);
        chain_.resize(pageSize_);
        return true;
    }

    std::uint64_t numberIn(std::string_view bytes, std::size_t offset, std::size_t width) const {
        return little_ ? littleEndian(bytes, offset, width) : bigEndian(bytes, offset, width);
    }

    // Visits the values of the page. False if one of them could not be read.
    bool readEntries() {
        const std::string_view page = page_;
        std::string_view offsets = page.substr(kPageHeader, 2 * numberIn(page, kEntries, 2));
        const std::size_t first = kPageHeader + offsets.size();  // of the bytes of entries
        bool all = true;
        for (; offsets.size() >= kTwoOffsets; offsets.remove_prefix(kTwoOffsets)) {
            const std::uint64_t end = numberIn(offsets, 0, 2);  // where the key begins
            const std::uint64_t start = numberIn(offsets, 2, 2);
            const bool valid = start >= first && start < end && end <= page.size();
            if (!valid || !readValue(page.substr(start, end - start))) all = false;
        }
        return all;
    }

    bool readValue(std::string_view entry) {
        if (entry.front() == kInline) {
            if (entry.size() > kNumberSize + 1) visit_(entry.substr(1));
            return true;
        }
        if (entry.front() != kLarge || entry.size() < kLargeSize) return false;
        const std::uint64_t length = numberIn(entry, 8, 4);
        if (length > kMaxBlob || length > file_.size || !readChain(numberIn(entry, 4, 4), length))
            return false;
        visit_(blob_);
        return true;
    }

    // Every page of the chain has at least one byte, so that a circle ends. The file's first page ends it too, by its type.
    bool readChain(std::uint64_t page, std::uint64_t length) {
        blob_.clear();
        while (blob_.size() < length) {
            if (page > lastPage_ || !file_.read(page * pageSize_, chain_)) return false;
            const std::string_view bytes = chain_;
            const std::uint64_t used = numberIn(bytes, kBytesInUse, 2);
            if (bytes[kType] != kChainPage || used == 0 || used > pageSize_ - kPageHeader) return false;
            blob_ += bytes.substr(kPageHeader, std::min(used, length - blob_.size()));
            page = numberIn(bytes, kNextPage, 4);
        }
        return true;
    }

    const BlobFile& file_;
    const BlobVisitor& visit_;
    bool little_{};
    std::uint64_t pageSize_{};
    std::uint64_t lastPage_{};
    std::string page_;
    std::string chain_;
    std::string blob_;
    bool whole_ = true;
};

}  // namespace

BlobReading readBerkeleyBlobs(const BlobFile& file, const BlobVisitor& visit) {
    return Berkeley(file, visit).read();
}

}  // namespace toolkit
