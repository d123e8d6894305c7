#include "toolkit/quorvis/formats/WindowsProgram.h"

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kWritable = 0x80000000U;
constexpr std::size_t kSectionSize = 40;

WindowsProgram::Section sectionIn(std::string_view entry) {
    WindowsProgram::Section section;
    section.name = entry.substr(0, std::min<std::size_t>(entry.find('\0'), 8));
    section.address = littleEndian(entry, 12, 4);
    section.size = littleEndian(entry, 16, 4);
    section.offset = littleEndian(entry, 20, 4);
    section.writable = (littleEndian(entry, 36, 4) & kWritable) != 0;
    return section;
}

// False when the headers are damaged. `headerAt` is the offset of "PE\0\0".
bool readHeaders(const RandomAccessFile& file, std::uint64_t headerAt, WindowsProgram& program) {
    constexpr std::size_t kFileHeader = 24;  // with the mark
    std::string header;
    if (!file.read(headerAt, kFileHeader, header)) return false;
    const std::uint64_t count = littleEndian(header, 6, 2);
    const std::uint64_t optionalSize = littleEndian(header, 20, 2);
    std::string optional;
    if (!file.read(headerAt + kFileHeader, optionalSize, optional) || optional.size() < 2) return false;
    const bool wide = littleEndian(optional, 0, 2) == 0x20B;
    if (optional.size() >= 32)
        program.base = wide ? littleEndian(optional, 24, 8) : littleEndian(optional, 28, 4);
    const std::size_t directories = wide ? 112 : 96;
    constexpr std::size_t kResources = 2;
    constexpr std::size_t kDirectorySize = 8;
    const std::size_t place = directories + kResources * kDirectorySize;
    if (optional.size() >= place + kDirectorySize && littleEndian(optional, directories - 4, 4) > kResources)
        program.resources = littleEndian(optional, place, 4);

    std::string table;
    if (!file.read(headerAt + kFileHeader + optionalSize, count * kSectionSize, table)) return false;
    for (std::size_t at = 0; at < table.size(); at += kSectionSize)
        program.sections.push_back(sectionIn(std::string_view(table).substr(at, kSectionSize)));
    return true;
}

}  // namespace

std::optional<std::uint64_t> WindowsProgram::offsetOf(std::uint64_t address) const {
    for (const Section& section : sections) {
        if (address >= section.address && address - section.address < section.size)
            return section.offset + (address - section.address);
    }
    return std::nullopt;
}

std::optional<WindowsProgram> WindowsProgram::read(const RandomAccessFile& file, bool& damaged) {
    damaged = false;
    const std::string start = file.readUpTo(0, 64);
    if (start.size() < 64 || !start.starts_with("MZ")) return std::nullopt;
    const std::uint64_t headerAt = littleEndian(start, 60, 4);
    // Programs for DOS start with "MZ" as well.
    if (file.readUpTo(headerAt, 4) != std::string_view("PE\0\0", 4)) return std::nullopt;
    WindowsProgram program;
    damaged = !readHeaders(file, headerAt, program);
    if (damaged) return std::nullopt;
    return program;
}

}  // namespace toolkit::quorvis
