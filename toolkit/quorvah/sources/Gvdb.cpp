#include "toolkit/quorvah/sources/Gvdb.h"

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvah {

namespace {

constexpr std::string_view kSignature = "GVariant";
constexpr std::size_t kHeader = 24;
constexpr std::size_t kTableHeader = 8;
constexpr std::size_t kWord = 4;
constexpr std::size_t kItem = 24;
constexpr std::size_t kNone = 0xFFFFFFFF;
constexpr int kMaxDepth = 64;

std::size_t word(std::string_view bytes, std::size_t offset) {
    return static_cast<std::size_t>(littleEndian(bytes, offset, kWord));
}

// The bytes between two offsets in the words at `offset`; empty if they do not lie in the file.
std::string_view referred(std::string_view file, std::string_view bytes, std::size_t offset) {
    const std::size_t begin = word(bytes, offset);
    const std::size_t end = word(bytes, offset + kWord);
    return begin <= end && end <= file.size() ? file.substr(begin, end - begin) : std::string_view();
}

// A variant: its value, a zero byte, and its type.
GvdbValue decode(std::string_view variant) {
    GvdbValue value;
    if (variant.size() == 3 && variant.ends_with(std::string_view("\0b", 2))) value.boolean = variant[0] != 0;
    const bool isUnsigned = variant.ends_with(std::string_view("\0u", 2));
    if (variant.size() == kWord + 2 && (isUnsigned || variant.ends_with(std::string_view("\0i", 2)))) {
        const std::uint64_t number = littleEndian(variant, 0, kWord);
        constexpr std::uint64_t kSign = 0x80000000;
        if (isUnsigned || number < kSign) value.number = number;
    }
    return value;
}

}  // namespace

GvdbFile::GvdbFile(std::string_view bytes) : bytes_(bytes) {
    if (bytes.size() < kHeader || !bytes.starts_with(kSignature)) return;
    const std::string_view table = referred(bytes, bytes, 16);
    if (table.size() < kTableHeader) return;
    // The highest five bits of the first number are those of a filter.
    const std::size_t filters = word(table, 0) & 0x07FFFFFFU;
    const std::size_t buckets = word(table, kWord);
    const std::size_t words = (table.size() - kTableHeader) / kWord;
    if (filters > words || buckets > words - filters) return;
    items_ = table.substr(kTableHeader + (filters + buckets) * kWord);
}

std::string_view GvdbFile::item(std::size_t index) const {
    return index < items_.size() / kItem ? items_.substr(index * kItem, kItem) : std::string_view();
}

// The name of an item is the last part of its path, and its parent has the parts before.
bool GvdbFile::hasPath(std::string_view entry, std::string_view path) const {
    for (int depth = 0; depth < kMaxDepth && !entry.empty(); ++depth) {
        const std::size_t begin = word(entry, 8);
        const auto length = static_cast<std::size_t>(littleEndian(entry, 12, 2));
        if (begin > bytes_.size() || length > bytes_.size() - begin) return false;
        const std::string_view name = bytes_.substr(begin, length);
        if (!path.ends_with(name)) return false;
        path.remove_suffix(name.size());
        const std::size_t parent = word(entry, 4);
        if (parent == kNone) return path.empty();
        entry = item(parent);
    }
    return false;
}

std::optional<GvdbValue> GvdbFile::find(std::string_view key) const {
    for (std::size_t i = 0; i < items_.size() / kItem; ++i) {
        const std::string_view entry = item(i);
        if (entry[14] != 'v' || !hasPath(entry, key)) continue;
        return decode(referred(bytes_, entry, 16));
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvah
