#include "toolkit/machine/packages/RpmHeader.h"

#include "toolkit/machine/text/Budget.h"
#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit {
namespace {

// A header is two counts, an index of 16-byte entries, and the store that the entries point into:
//     entries, store size, { tag, type, offset, count } ..., store
constexpr std::size_t kCounts = 8;
constexpr std::size_t kEntry = 16;

enum Tag : std::uint64_t {
    kName = 1000,
    kVersion = 1001,
    kRelease = 1002,
    kEpoch = 1003,
    kSummary = 1004,
    kInstallTime = 1008,
    kSize = 1009,
    kVendor = 1011,
    kGroup = 1016,
    kArchitecture = 1022,
    kSourceRpm = 1044,
    kLongSize = 5009,
};

enum Type : std::uint64_t { kInt32 = 4, kInt64 = 5, kString = 6, kTranslatedString = 9 };

// The text that begins `bytes`; of a translated one the first, which is not translated. Empty without its
// end, which is not looked for farther away than a text is long.
std::string_view textOf(std::uint64_t type, std::string_view bytes) {
    if (type != kString && type != kTranslatedString) return {};
    const std::size_t end = bytes.substr(0, kLongestValue + 1).find('\0');
    return end == std::string_view::npos ? std::string_view() : bytes.substr(0, end);
}

bool numberOf(std::uint64_t type, std::string_view bytes, std::uint64_t& number) {
    const std::size_t width = type == kInt32 ? 4 : type == kInt64 ? 8 : 0;
    if (width == 0 || bytes.size() < width) return false;
    number = bigEndian(bytes, 0, width);
    return true;
}

void storeEntry(std::uint64_t tag, std::uint64_t type, std::string_view bytes, RpmPackage& package) {
    switch (tag) {
        case kName:
            package.name = textOf(type, bytes);
            break;
        case kVersion:
            package.version = textOf(type, bytes);
            break;
        case kRelease:
            package.release = textOf(type, bytes);
            break;
        case kEpoch:
            package.hasEpoch = numberOf(type, bytes, package.epoch);
            break;
        case kSummary:
            package.summary = textOf(type, bytes);
            break;
        case kInstallTime:
            numberOf(type, bytes, package.installTime);
            break;
        case kSize:
        case kLongSize:  // stands instead of the other one where that is too narrow
            numberOf(type, bytes, package.size);
            break;
        case kVendor:
            package.vendor = textOf(type, bytes);
            break;
        case kGroup:
            package.group = textOf(type, bytes);
            break;
        case kArchitecture:
            package.architecture = textOf(type, bytes);
            break;
        case kSourceRpm:
            package.sourceRpm = textOf(type, bytes);
            break;
        default:
            break;
    }
}

}  // namespace

bool readRpmHeader(std::string_view header, RpmPackage& package) {
    package = {};
    if (header.size() < kCounts) return false;
    const std::uint64_t entries = bigEndian(header, 0, 4);
    const std::uint64_t storeSize = bigEndian(header, 4, 4);
    if (entries > header.size() / kEntry || storeSize > header.size()) return false;
    const std::size_t storeAt = kCounts + static_cast<std::size_t>(entries) * kEntry;
    if (storeAt + storeSize > header.size()) return false;
    const std::string_view store = header.substr(storeAt, storeSize);
    for (std::size_t at = kCounts; at < storeAt; at += kEntry) {
        const std::uint64_t offset = bigEndian(header, at + 8, 4);
        if (offset >= store.size()) continue;  // the entry of a region may point outside
        storeEntry(bigEndian(header, at, 4), bigEndian(header, at + 4, 4), store.substr(offset), package);
    }
    return !package.name.empty();
}

std::string_view nameOfSourceRpm(std::string_view sourceRpm) {
    const std::size_t release = sourceRpm.rfind('-');
    if (release == std::string_view::npos || release == 0) return {};
    const std::size_t version = sourceRpm.rfind('-', release - 1);
    return version == std::string_view::npos ? std::string_view() : sourceRpm.substr(0, version);
}

}  // namespace toolkit
