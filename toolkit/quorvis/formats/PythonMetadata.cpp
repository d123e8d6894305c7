#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {

ProductFacts readPythonMetadata(const RandomAccessFile& file) {
    constexpr std::uint64_t kMaxHeaderSize = std::uint64_t{1} << 20;
    const std::string text = file.readUpTo(0, kMaxHeaderSize);
    ProductFacts facts;
    std::string_view rest = text;
    // An empty line ends the headers. A description follows.
    for (std::string_view line; nextLine(rest, line) && !line.empty();) {
        const std::string_view name = takeField(line, ':');
        const std::string_view value = trimmed(line);
        if (name == "Name") facts.name = value;
        if (name == "Version") facts.version = value;
        if (name == "Author") facts.vendor = value;
    }
    return facts;
}

}  // namespace toolkit::quorvis
