#include "toolkit/quorvis/leaves/PieceSearch.h"

#include <algorithm>
#include <string>

namespace toolkit::quorvis {

bool searchPieces(const RandomAccessFile& file, const PieceRange& range, const re2::RE2& regex, int lastGroup,
                  const PieceVisitor& visit) {
    const std::uint64_t pieceSize = range.pieceSize + range.longestMatch;
    std::string piece;
    std::uint64_t searched = 0;  // bytes of the range in which no further match begins
    while (searched < range.size) {
        // The byte before tells the expression that this is not the start of the text.
        const std::uint64_t before = searched == 0 ? 0 : 1;
        const std::uint64_t begin = searched - before;
        const std::uint64_t size = std::min(pieceSize, range.size - begin);
        if (!file.read(range.offset + begin, size, piece)) return false;
        const bool last = begin + size == range.size;
        const std::uint64_t end = last ? range.size : begin + size - range.longestMatch;
        searched = end;
        for (RegexMatches matches(regex, piece, lastGroup, before); matches.next();) {
            const std::uint64_t place = begin + matches.begin();
            if (place >= end && !last) break;
            // A match that reaches the end of a piece is longer than the longest one.
            if (matches.end() == piece.size() && !last) continue;
            if (!visit(matches, range.offset + place)) return true;
            searched = std::max(searched, begin + matches.end());
        }
    }
    return true;
}

}  // namespace toolkit::quorvis
