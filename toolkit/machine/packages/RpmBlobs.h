// The database files of rpm before it used SQLite. Both hold one blob per package: its header.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace toolkit {

// A file that is read in pieces.
struct BlobFile {
    // Fills `bytes` from this offset. False when the file ends before, or may not be read.
    std::function<bool(std::uint64_t offset, std::span<char> bytes)> read;
    std::uint64_t size = 0;
};

enum class BlobReading : std::uint8_t {
    Complete,
    Incomplete,   // a part could not be read; all other blobs were visited
    Unsupported,  // the file is of another kind or version, or shorter than its header
};

// A blob of at most 32 MiB, which is valid during the call only.
using BlobVisitor = std::function<void(std::string_view blob)>;

// Visits the blobs of an NDB file (Packages.db).
BlobReading readNdbBlobs(const BlobFile& file, const BlobVisitor& visit);

// Visits the values of a Berkeley DB hash file (Packages), of which rpm uses those that are longer than a number. The file may have
// the byte order of any machine.
BlobReading readBerkeleyBlobs(const BlobFile& file, const BlobVisitor& visit);

}  // namespace toolkit
