// The search of large files: in pieces of any size it finds the same matches as in the text as a whole. The input is the size of
// the pieces, the longest match, the expression up to a line feed, and the text.
#include <fcntl.h>
#include <re2/re2.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/MemoryFile.h"
#include "toolkit/quorvis/leaves/PieceSearch.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace {

namespace quorvis = toolkit::quorvis;

using Matches = std::vector<std::pair<std::uint64_t, std::uint64_t>>;  // begin and end

void must(bool holds) {
    if (!holds) std::abort();
}

// Whether the expression may look at what follows a match, which the end of a piece hides.
bool looksAhead(std::string_view pattern) {
    for (const char* const part : {"$", "\\b", "\\B", "\\z", "(?"}) {
        if (pattern.find(part) != std::string_view::npos) return true;
    }
    return false;
}

Matches matchesInPieces(const quorvis::RandomAccessFile& file, const quorvis::PieceRange& range,
                        const RE2& regex) {
    Matches found;
    const auto visit = [&](const quorvis::RegexMatches& match, std::uint64_t offset) {
        const std::uint64_t end = offset + (match.end() - match.begin());
        must(offset >= range.offset && end <= range.offset + range.size);
        must(found.empty() || offset >= found.back().second);
        if (end > offset) found.emplace_back(offset, end);
        return true;
    };
    must(quorvis::searchPieces(file, range, regex, 0, visit));
    return found;
}

// `longest` becomes the length of the longest match.
Matches matchesInText(std::string_view text, std::uint64_t offset, const RE2& regex, std::uint64_t& longest) {
    Matches found;
    longest = 0;
    for (quorvis::RegexMatches matches(regex, text, 0); matches.next();) {
        const std::uint64_t size = matches.end() - matches.begin();
        longest = std::max(longest, size);
        if (size > 0) found.emplace_back(offset + matches.begin(), offset + matches.end());
    }
    return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMaxPattern = 64;
    if (size < 2) return 0;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t lineEnd = input.find('\n', 2);
    if (lineEnd == std::string_view::npos || lineEnd > kMaxPattern) return 0;
    const std::string_view pattern = input.substr(2, lineEnd - 2);
    std::string problem;
    const RE2* const regex = quorvis::compileRegex(pattern, "", problem);
    if (regex == nullptr) return 0;

    const zavfuzz::MemoryFile memory(data, size);
    const quorvis::RandomAccessFile file(
        kest::Descriptor(::open(memory.path().c_str(), O_RDONLY | O_CLOEXEC)));
    const std::uint64_t begin = lineEnd + 1;
    quorvis::PieceRange range{begin, size - begin, std::uint64_t{1} + data[1] % 32U};
    range.pieceSize = 2 + data[0] % 64U;
    const Matches inPieces = matchesInPieces(file, range, *regex);
    std::uint64_t longest = 0;
    const Matches inText = matchesInText(input.substr(begin), begin, *regex, longest);
    if (longest <= range.longestMatch && !looksAhead(pattern)) must(inPieces == inText);
    quorvis::forgetRegexes();
    return 0;
}
