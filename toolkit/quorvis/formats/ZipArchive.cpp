#include "toolkit/quorvis/formats/ZipArchive.h"

#include <algorithm>
#include <optional>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/quorvis/formats/Inflate.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kMemberMark("PK\x03\x04", 4);
constexpr std::string_view kEntryMark("PK\x01\x02", 4);
constexpr std::string_view kEndMark("PK\x05\x06", 4);
constexpr std::string_view kEnd64Mark("PK\x06\x06", 4);
constexpr std::string_view kLocator64Mark("PK\x06\x07", 4);

constexpr std::size_t kMemberSize = 30;
constexpr std::size_t kEntrySize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kLocator64Size = 20;
constexpr std::uint64_t kMaxCommentSize = 0xFFFF;
constexpr std::uint64_t kShortCommentSize = 256;
constexpr std::uint64_t kMaxDirectorySize = std::uint64_t{32} << 20;
constexpr std::size_t kMaxMembers = 1'000;

constexpr std::uint64_t kStored = 0;
constexpr std::uint64_t kDeflated = 8;

struct Directory {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t before = 0;  // number of bytes before the archive, for example of a script
};

// Archives with more than 65,535 members or 4 GiB have an additional ZIP64 record before the end record.
std::optional<Directory> directory64(const RandomAccessFile& file, std::uint64_t endAt) {
    std::string record;
    if (endAt < kLocator64Size || !file.read(endAt - kLocator64Size, kLocator64Size, record))
        return std::nullopt;
    if (!record.starts_with(kLocator64Mark)) return std::nullopt;
    if (!file.read(littleEndian(record, 8, 8), kEnd64Size, record)) return std::nullopt;
    if (!record.starts_with(kEnd64Mark)) return std::nullopt;
    return Directory{littleEndian(record, 48, 8), littleEndian(record, 40, 8), 0};
}

// Finds the last end record within this number of bytes at the end of the file. `tail` is what begins at `start`.
std::optional<std::size_t> findEnd(const RandomAccessFile& file, std::uint64_t size, std::uint64_t& start,
                                   std::string& tail) {
    start = file.size() - std::min(file.size(), size);
    tail = file.readUpTo(start, size);
    if (tail.size() < kEndSize) return std::nullopt;
    const std::size_t at = tail.rfind(kEndMark, tail.size() - kEndSize);
    return at == std::string::npos ? std::nullopt : std::optional(at);
}

std::optional<Directory> findDirectory(const RandomAccessFile& file) {
    std::uint64_t start = 0;
    std::string tail;
    // Most archives have no comment, or a short one.
    std::optional<std::size_t> end = findEnd(file, kEndSize + kShortCommentSize, start, tail);
    if (!end) end = findEnd(file, kEndSize + kMaxCommentSize, start, tail);
    if (!end) return std::nullopt;
    const std::size_t at = *end;
    if (const auto directory = directory64(file, start + at)) return directory;

    Directory directory{littleEndian(tail, at + 16, 4), littleEndian(tail, at + 12, 4), 0};
    const std::uint64_t endAt = start + at;
    if (directory.size > endAt || directory.offset > endAt - directory.size) return directory;
    directory.before = endAt - directory.size - directory.offset;
    directory.offset += directory.before;
    return directory;
}

// Takes the next entry. Sets all members of `member` except the name.
bool takeEntry(std::string_view& rest, std::string_view& name, ZipMember& member) {
    if (rest.size() < kEntrySize || !rest.starts_with(kEntryMark)) return false;
    const std::size_t nameSize = littleEndian(rest, 28, 2);
    const std::size_t size = kEntrySize + nameSize + littleEndian(rest, 30, 2) + littleEndian(rest, 32, 2);
    if (size > rest.size()) return false;
    name = rest.substr(kEntrySize, nameSize);
    member.encrypted = (littleEndian(rest, 8, 2) & 1U) != 0;
    member.method = littleEndian(rest, 10, 2);
    member.packedSize = littleEndian(rest, 20, 4);
    member.offset = littleEndian(rest, 42, 4);
    rest.remove_prefix(size);
    return true;
}

}  // namespace

ZipReading listZip(const RandomAccessFile& file, const std::function<bool(std::string_view name)>& wanted,
                   std::vector<ZipMember>& members) {
    const std::optional<Directory> directory = findDirectory(file);
    if (!directory) return file.readUpTo(0, 4) == kMemberMark ? ZipReading::Damaged : ZipReading::NoArchive;
    std::string bytes;
    if (directory->size > kMaxDirectorySize || !file.read(directory->offset, directory->size, bytes))
        return ZipReading::Damaged;
    std::string_view rest = bytes;
    std::string_view name;
    for (ZipMember member; !rest.empty();) {
        if (!takeEntry(rest, name, member)) return ZipReading::Damaged;
        if (!wanted(name)) continue;
        if (members.size() == kMaxMembers) return ZipReading::Damaged;
        member.name = name;
        const Count offset = sum(member.offset, directory->before);
        if (!offset) return ZipReading::Damaged;
        member.offset = *offset;
        members.push_back(member);
    }
    return ZipReading::Ok;
}

bool readZipMember(const RandomAccessFile& file, const ZipMember& member, std::uint64_t limit,
                   std::string& content) {
    content.clear();
    std::string header;
    if (member.encrypted || !file.read(member.offset, kMemberSize, header) ||
        !header.starts_with(kMemberMark))
        return false;
    const std::uint64_t start =
        member.offset + kMemberSize + littleEndian(header, 26, 2) + littleEndian(header, 28, 2);
    // Incompressible data grows slightly by packing.
    const std::uint64_t packedLimit = limit + limit / 8 + 64;
    std::string packed;
    if (!file.read(start, std::min(member.packedSize, packedLimit), packed)) return false;
    if (member.method == kDeflated) return inflate(packed, Packing::Raw, limit, content);
    content = packed.substr(0, limit);
    return member.method == kStored;
}

std::optional<RandomAccessFile> storedMember(const RandomAccessFile& file, const ZipMember& member) {
    std::string header;
    if (member.encrypted || member.method != kStored || !file.read(member.offset, kMemberSize, header) ||
        !header.starts_with(kMemberMark))
        return std::nullopt;
    const std::uint64_t start =
        member.offset + kMemberSize + littleEndian(header, 26, 2) + littleEndian(header, 28, 2);
    if (start > file.size() || member.packedSize > file.size() - start) return std::nullopt;
    return RandomAccessFile(file, start, member.packedSize);
}

}  // namespace toolkit::quorvis
