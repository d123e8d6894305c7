#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// A member of an archive.
struct ZipMember {
    std::string name;
    std::uint64_t offset = 0;  // of its local header
    std::uint64_t packedSize = 0;
    std::uint64_t method = 0;
    bool encrypted = false;
};

enum class ZipReading : std::uint8_t { Ok, NoArchive, Damaged };

// Lists the members with wanted names. In a damaged archive, those before the damage.
ZipReading listZip(const RandomAccessFile& file, const std::function<bool(std::string_view name)>& wanted,
                   std::vector<ZipMember>& members);

// Reads the first `limit` bytes of a member. False if it is damaged, encrypted, or uses an unsupported compression method.
bool readZipMember(const RandomAccessFile& file, const ZipMember& member, std::uint64_t limit,
                   std::string& content);

// The content of a member that is not compressed, as a part of the archive. None for all others.
std::optional<RandomAccessFile> storedMember(const RandomAccessFile& file, const ZipMember& member);

}  // namespace toolkit::quorvis
