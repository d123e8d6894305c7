#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// A file in an archive.
struct ZipMember {
    std::string name;
    std::uint64_t offset = 0;  // of its own header
    std::uint64_t packedSize = 0;
    std::uint64_t method = 0;
    bool encrypted = false;
};

enum class ZipReading : std::uint8_t { Ok, NoArchive, Damaged };

// Lists the members whose names are wanted; those before a damage too.
ZipReading listZip(const RandomAccessFile& file, const std::function<bool(std::string_view name)>& wanted,
                   std::vector<ZipMember>& members);

// The first `limit` bytes of a member's content; false when it is damaged or packed in an unusual way.
bool readZipMember(const RandomAccessFile& file, const ZipMember& member, std::uint64_t limit,
                   std::string& content);

}  // namespace toolkit::quorvis
