#include "toolkit/quorvis/formats/DocumentText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "kest/Descriptor.h"
#include "tessa/Encoding.h"
#include "toolkit/machine/text/Utf8.h"

namespace toolkit::quorvis {

namespace {

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

// False, with errno set, when the file cannot be read.
bool readAll(const std::string& path, std::string& bytes) {
    kest::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return false;
    constexpr std::size_t kBlock = std::size_t{64} << 10;
    const auto expected = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
    bytes.resize(std::min(expected, kLargestDocument) + 1);
    std::size_t used = 0;
    for (;;) {
        if (used == bytes.size()) bytes.resize(used + kBlock);
        const ssize_t count = ::read(file.number(), bytes.data() + used, bytes.size() - used);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        used += static_cast<std::size_t>(count);
        if (count == 0 || used > kLargestDocument) break;
    }
    bytes.resize(used);
    return true;
}

}  // namespace

DocumentText readDocument(const std::string& path) {
    DocumentText document;
    if (!readAll(path, document.bytes)) {
        document.error = path + ": " + std::strerror(errno);
    } else if (document.bytes.size() > kLargestDocument) {
        document.error = path + ": larger than 64 MiB";
    } else if (const int unit = tessa::ByteForm::of(document.bytes).unit; unit != 1) {
        document.error = path + (unit == 2 ? ": in UTF-16" : ": in UTF-32") + ", UTF-8 is expected";
    } else {
        document.utf8 = isUtf8(document.bytes);
    }
    return document;
}

std::size_t columnIn(const DocumentText& document, std::size_t offset) {
    const std::string_view before = std::string_view(document.bytes).substr(0, offset);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    if (!document.utf8) return 1 + line.size();
    return 1 + line.size() - static_cast<std::size_t>(std::ranges::count_if(line, isContinuation));
}

TextPlace placeIn(const DocumentText& document, std::size_t offset) {
    const std::string_view before = std::string_view(document.bytes).substr(0, offset);
    const auto lines = static_cast<std::size_t>(std::ranges::count(before, '\n'));
    return {1 + lines, columnIn(document, offset)};
}

std::string utf8FromLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0U | (byte >> 6U));
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

}  // namespace toolkit::quorvis
