#include "toolkit/quorvis/formats/ElfFile.h"

#include <elf.h>

#include <algorithm>
#include <cstddef>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/ElfMachine.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kMaxSections = std::uint64_t{1} << 18;
constexpr std::uint64_t kMaxNamesSize = std::uint64_t{16} << 20;
constexpr std::uint64_t kMaxDynamicSize = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaxNoteSize = std::uint64_t{64} << 10;
constexpr std::uint64_t kMaxTextSize = std::uint64_t{4} << 10;
constexpr std::size_t kMaxNeeded = 1000;

std::string hexadecimal(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

// Rounded up to the next multiple.
std::uint64_t aligned(std::uint64_t size, std::uint64_t alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

}  // namespace

std::optional<ElfFile> ElfFile::open(const RandomAccessFile& file, bool& damaged) {
    damaged = false;
    ElfFile elf(file);
    elf.header_ = file.readUpTo(0, sizeof(Elf64_Ehdr));
    if (!elf.header_.starts_with(ELFMAG)) return std::nullopt;
    damaged = !elf.readHeader() || !elf.readSegments();
    if (damaged) return std::nullopt;
    return elf;
}

std::uint64_t ElfFile::number(std::string_view bytes, std::size_t offset, std::size_t width) const {
    return littleEndian_ ? littleEndian(bytes, offset, width) : bigEndian(bytes, offset, width);
}

std::uint64_t ElfFile::address(std::string_view bytes, std::size_t offset32, std::size_t offset64) const {
    return wide_ ? number(bytes, offset64, 8) : number(bytes, offset32, 4);
}

bool ElfFile::readHeader() {
    if (header_.size() < sizeof(Elf32_Ehdr)) return false;
    const char format = header_[EI_CLASS];
    const char order = header_[EI_DATA];
    wide_ = format == ELFCLASS64;
    littleEndian_ = order == ELFDATA2LSB;
    if ((format != ELFCLASS32 && !wide_) || (order != ELFDATA2MSB && !littleEndian_)) return false;
    if (wide_ && header_.size() < sizeof(Elf64_Ehdr)) return false;
    machine_ = machineOfElf(header_);
    return true;
}

ElfFile::Segment ElfFile::segment(std::string_view entry) const {
    Segment segment;
    segment.type = number(entry, 0, 4);
    segment.offset = address(entry, offsetof(Elf32_Phdr, p_offset), offsetof(Elf64_Phdr, p_offset));
    segment.address = address(entry, offsetof(Elf32_Phdr, p_vaddr), offsetof(Elf64_Phdr, p_vaddr));
    segment.size = address(entry, offsetof(Elf32_Phdr, p_filesz), offsetof(Elf64_Phdr, p_filesz));
    segment.flags = number(entry, wide_ ? offsetof(Elf64_Phdr, p_flags) : offsetof(Elf32_Phdr, p_flags), 4);
    segment.alignment = address(entry, offsetof(Elf32_Phdr, p_align), offsetof(Elf64_Phdr, p_align));
    return segment;
}

ElfFile::Segment ElfFile::section(std::string_view entry) const {
    Segment section;
    section.name = number(entry, 0, 4);
    section.type = number(entry, 4, 4);
    section.offset = address(entry, offsetof(Elf32_Shdr, sh_offset), offsetof(Elf64_Shdr, sh_offset));
    section.size = address(entry, offsetof(Elf32_Shdr, sh_size), offsetof(Elf64_Shdr, sh_size));
    section.link = number(entry, wide_ ? offsetof(Elf64_Shdr, sh_link) : offsetof(Elf32_Shdr, sh_link), 4);
    section.alignment =
        address(entry, offsetof(Elf32_Shdr, sh_addralign), offsetof(Elf64_Shdr, sh_addralign));
    return section;
}

bool ElfFile::readSegments() {
    const std::uint64_t offset =
        address(header_, offsetof(Elf32_Ehdr, e_phoff), offsetof(Elf64_Ehdr, e_phoff));
    const std::size_t sizeAt = wide_ ? offsetof(Elf64_Ehdr, e_phentsize) : offsetof(Elf32_Ehdr, e_phentsize);
    const std::uint64_t count = number(header_, sizeAt + 2, 2);
    const std::size_t size = wide_ ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr);
    if (offset == 0 || count == 0) return true;
    std::string table;
    if (number(header_, sizeAt, 2) != size || !file_->read(offset, count * size, table)) return false;
    for (std::string_view rest = table; !rest.empty(); rest.remove_prefix(size))
        segments_.push_back(segment(rest));
    return true;
}

// Reads the section headers, and the section that contains their names. False when they are damaged.
bool ElfFile::readSections(std::vector<Segment>& sections, std::string& names) const {
    const std::uint64_t offset =
        address(header_, offsetof(Elf32_Ehdr, e_shoff), offsetof(Elf64_Ehdr, e_shoff));
    const std::size_t sizeAt = wide_ ? offsetof(Elf64_Ehdr, e_shentsize) : offsetof(Elf32_Ehdr, e_shentsize);
    const std::size_t size = wide_ ? sizeof(Elf64_Shdr) : sizeof(Elf32_Shdr);
    if (offset == 0) return true;
    std::string table;
    if (number(header_, sizeAt, 2) != size || !file_->read(offset, size, table)) return false;
    // Numbers that do not fit into the header are in the first section header.
    const Segment first = section(table);
    std::uint64_t count = number(header_, sizeAt + 2, 2);
    std::uint64_t namesAt = number(header_, sizeAt + 4, 2);
    if (count == 0) count = first.size;
    if (namesAt == SHN_XINDEX) namesAt = first.link;
    if (count > kMaxSections || !file_->read(offset, count * size, table)) return false;
    for (std::string_view rest = table; !rest.empty(); rest.remove_prefix(size))
        sections.push_back(section(rest));
    if (namesAt >= sections.size()) return namesAt == SHN_UNDEF;
    const Segment& place = sections[namesAt];
    return place.size <= kMaxNamesSize && file_->read(place.offset, place.size, names);
}

std::optional<std::uint64_t> ElfFile::offsetOf(std::uint64_t address) const {
    for (const Segment& loaded : segments_) {
        if (loaded.type != PT_LOAD || address < loaded.address) continue;
        const std::uint64_t inside = address - loaded.address;
        if (inside < loaded.size) return sum(loaded.offset, inside);
    }
    return std::nullopt;
}

bool ElfFile::readText(std::uint64_t offset, std::string& text) const {
    text = file_->readUpTo(offset, kMaxTextSize);
    const std::size_t end = text.find('\0');
    if (end == std::string::npos) return false;
    text.resize(end);
    return true;
}

bool ElfFile::readDynamic(Dynamic& dynamic) const {
    const auto found = std::ranges::find(segments_, std::uint64_t{PT_DYNAMIC}, &Segment::type);
    if (found == segments_.end()) return true;
    std::string table;
    if (found->size > kMaxDynamicSize || !file_->read(found->offset, found->size, table)) return false;

    const std::size_t width = wide_ ? 8 : 4;
    std::vector<std::uint64_t> needed;
    std::optional<std::uint64_t> soname;
    std::optional<std::uint64_t> texts;
    for (std::size_t at = 0; at + 2 * width <= table.size(); at += 2 * width) {
        const std::uint64_t tag = number(table, at, width);
        const std::uint64_t value = number(table, at + width, width);
        if (tag == DT_NULL) break;
        if (tag == DT_NEEDED && needed.size() < kMaxNeeded) needed.push_back(value);
        if (tag == DT_SONAME) soname = value;
        if (tag == DT_STRTAB) texts = offsetOf(value);
    }
    const auto readFrom = [&](std::uint64_t at, std::string& text) {
        const Count place = sum(texts, at);
        return place && readText(*place, text);
    };
    if (soname && !readFrom(*soname, dynamic.soname)) return false;
    return std::ranges::all_of(needed,
                               [&](std::uint64_t at) { return readFrom(at, dynamic.needed.emplace_back()); });
}

std::string ElfFile::buildIdIn(std::string_view notes, std::size_t alignment) const {
    constexpr std::uint64_t kHeader = 12;
    while (notes.size() >= kHeader) {
        const std::uint64_t nameSize = number(notes, 0, 4);
        const std::uint64_t size = number(notes, 4, 4);
        const std::uint64_t type = number(notes, 8, 4);
        const std::uint64_t start = aligned(kHeader + nameSize, alignment);
        if (start + size > notes.size()) break;
        if (type == NT_GNU_BUILD_ID && notes.substr(kHeader, nameSize) == std::string_view("GNU\0", 4))
            return hexadecimal(notes.substr(start, size));
        notes.remove_prefix(std::min<std::uint64_t>(aligned(start + size, alignment), notes.size()));
    }
    return {};
}

std::string ElfFile::buildId() const {
    const auto idIn = [this](const Segment& place) {
        const std::string notes = file_->readUpTo(place.offset, std::min(place.size, kMaxNoteSize));
        return buildIdIn(notes, place.alignment == 8 ? 8 : 4);
    };
    for (const Segment& segment : segments_) {
        std::string id = segment.type == PT_NOTE ? idIn(segment) : std::string();
        if (!id.empty()) return id;
    }
    // Kernel modules have no segments.
    std::vector<Segment> sections;
    std::string names;
    if (!segments_.empty() || !readSections(sections, names)) return {};
    for (const Segment& section : sections) {
        std::string id = section.type == SHT_NOTE ? idIn(section) : std::string();
        if (!id.empty()) return id;
    }
    return {};
}

bool ElfFile::hasSections() const {
    return address(header_, offsetof(Elf32_Ehdr, e_shoff), offsetof(Elf64_Ehdr, e_shoff)) != 0;
}

std::optional<ElfFile::Place> ElfFile::writableData() const {
    for (const Segment& segment : segments_) {
        if (segment.type == PT_LOAD && (segment.flags & (PF_W | PF_X)) == PF_W)
            return Place{segment.offset, segment.size};
    }
    return std::nullopt;
}

ElfFile::Section ElfFile::findSection(std::string_view name, Place& place) const {
    std::vector<Segment> sections;
    std::string names;
    if (!readSections(sections, names)) return Section::Damaged;
    const auto isNamed = [&](const Segment& section) {
        if (section.name >= names.size()) return false;
        const std::string_view rest = std::string_view(names).substr(section.name);
        return rest.size() > name.size() && rest.starts_with(name) && rest[name.size()] == '\0';
    };
    const auto found = std::ranges::find_if(sections, isNamed);
    if (found == sections.end() || found->type == SHT_NOBITS) return Section::Missing;
    place = {found->offset, found->size};
    return Section::Found;
}

ElfFile::Section ElfFile::readSection(std::string_view name, std::uint64_t limit,
                                      std::string& content) const {
    Place place;
    const Section section = findSection(name, place);
    if (section != Section::Found) return section;
    if (place.size > limit) return Section::TooLarge;
    return file_->read(place.offset, place.size, content) ? Section::Found : Section::Damaged;
}

}  // namespace toolkit::quorvis
