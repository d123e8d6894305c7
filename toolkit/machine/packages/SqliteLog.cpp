#include "toolkit/machine/packages/SqliteLog.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit {
namespace {

// The log is a header followed by frames. A frame is a header and a page. All numbers are big-endian:
//     header: magic, version, page size, count of checkpoints, salt (2), checksum (2)
//     frame:  page number, pages of the database if this commits a transaction or 0, salt (2), checksum (2)
constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kFrameHeaderSize = 24;
constexpr std::uint64_t kMagic = 0x377F0682;  // the lowest bit is set if checksums are of big-endian words
constexpr std::uint64_t kVersion = 3'007'000;

template <std::size_t kSize>
std::string_view view(const std::array<char, kSize>& bytes) {
    return {bytes.data(), bytes.size()};
}

}  // namespace

// The checksum that continues from frame to frame.
class SqliteLog::Checksum {
  public:
    explicit Checksum(bool bigEndianWords)
        : swaps_(bigEndianWords != (std::endian::native == std::endian::big)) {}

    // REQUIRES: the size is a multiple of 8.
    void add(std::string_view bytes) {
        for (std::size_t at = 0; at < bytes.size(); at += 8) {
            first_ += word(bytes.data() + at) + second_;
            second_ += word(bytes.data() + at + 4) + first_;
        }
    }
    // Whether these bytes begin with the checksum.
    bool isStoredIn(std::string_view bytes) const {
        return first_ == bigEndian(bytes, 0, 4) && second_ == bigEndian(bytes, 4, 4);
    }

  private:
    std::uint32_t word(const char* bytes) const {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return swaps_ ? __builtin_bswap32(value) : value;
    }

    bool swaps_;
    std::uint32_t first_ = 0;
    std::uint32_t second_ = 0;
};

namespace {

bool isHeader(std::string_view header) {
    const std::uint64_t pageSize = bigEndian(header, 8, 4);
    if ((bigEndian(header, 0, 4) & ~std::uint64_t{1}) != kMagic || bigEndian(header, 4, 4) != kVersion)
        return false;
    const int exponent = std::countr_zero(pageSize);
    return std::has_single_bit(pageSize) && exponent >= 9 && exponent <= 16;
}

}  // namespace

SqliteLog::SqliteLog(const SqliteInput& log) : log_(log) {
    if (log.size == 0) return;
    readable_ = false;
    std::array<char, kHeaderSize> bytes;
    const std::string_view header = view(bytes);
    if (log.size < bytes.size() || !log.read(0, bytes) || !isHeader(header)) return;
    Checksum sum((bigEndian(header, 0, 4) & 1U) != 0);
    sum.add(header.substr(0, 24));
    if (!sum.isStoredIn(header.substr(24))) return;
    pageSize_ = static_cast<std::size_t>(bigEndian(header, 8, 4));
    salt_ = bigEndian(header, 16, 8);
    readable_ = readFrames(sum);
    if (!readable_) frames_.clear();
}

// False when a part could not be read.
bool SqliteLog::readFrames(Checksum sum) {
    std::string frame(kFrameHeaderSize + pageSize_, '\0');
    const std::uint64_t count = std::min<std::uint64_t>((log_.size - kHeaderSize) / frame.size(),
                                                        std::numeric_limits<std::uint32_t>::max());
    std::size_t committed = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!log_.read(kHeaderSize + std::uint64_t{i} * frame.size(), frame)) return false;
        const std::string_view content = frame;
        const auto page = static_cast<std::uint32_t>(bigEndian(content, 0, 4));
        if (page == 0 || bigEndian(content, 8, 8) != salt_) break;
        sum.add(content.substr(0, 8));
        sum.add(content.substr(kFrameHeaderSize));
        if (!sum.isStoredIn(content.substr(16))) break;
        frames_.push_back({page, i});
        if (const std::uint64_t pages = bigEndian(content, 4, 4); pages != 0) {
            databasePages_ = static_cast<std::uint32_t>(pages);
            committed = frames_.size();
        }
    }
    frames_.resize(committed);
    keepLatestFrames();
    return true;
}

void SqliteLog::keepLatestFrames() {
    std::ranges::stable_sort(frames_, {}, &Frame::page);
    const auto ofOnePage = [](const Frame& left, const Frame& right) { return left.page == right.page; };
    const auto kept = std::unique(frames_.rbegin(), frames_.rend(), ofOnePage);
    frames_.erase(frames_.begin(), kept.base());
}

std::optional<std::uint64_t> SqliteLog::find(std::uint64_t page) const {
    const auto frame = std::ranges::lower_bound(frames_, page, {}, &Frame::page);
    if (frame == frames_.end() || frame->page != page) return {};
    return kHeaderSize + std::uint64_t{frame->index} * (kFrameHeaderSize + pageSize_) + kFrameHeaderSize;
}

bool SqliteLog::wasRestarted() const {
    std::array<char, sizeof salt_> salt;
    return !isEmpty() && !(log_.read(16, salt) && bigEndian(view(salt), 0, 8) == salt_);
}

}  // namespace toolkit
