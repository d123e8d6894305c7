#pragma once

#include <re2/re2.h>

#include <cstdint>
#include <functional>
#include <string_view>

#include "toolkit/quorvis/formats/RandomAccessFile.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

// A range of a file to be searched.
struct PieceRange {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t longestMatch = 0;                    // bytes
    std::uint64_t pieceSize = std::uint64_t{4} << 20;  // bytes, without what overlaps; at least 2
};

// Of expressions that search large files, by default and at most.
inline constexpr std::uint64_t kLongestMatch = std::uint64_t{4} << 10;
inline constexpr std::uint64_t kLimitOfMaxMatch = std::uint64_t{1} << 20;

// Called with a match and its offset in the file. False ends the search.
using PieceVisitor = std::function<bool(const RegexMatches& match, std::uint64_t offset)>;

// Searches the range in pieces, so that memory does not grow with it. Pieces overlap by the longest match. A longer match may
// be missed. False when a part of the range could not be read.
bool searchPieces(const RandomAccessFile& file, const PieceRange& range, const re2::RE2& regex, int lastGroup,
                  const PieceVisitor& visit);

}  // namespace toolkit::quorvis
