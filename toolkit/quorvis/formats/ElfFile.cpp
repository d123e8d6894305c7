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
constexpr std::uint64_t kMaxVersions = 1000;

// Of a note that describes the package of a file, with the owner "FDO".
constexpr std::uint64_t kPackageNote = 0xCAFE1A7E;

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

bool ElfFile::readText(const DynamicTable& table, std::uint64_t at, std::string& text) const {
    const Count place = sum(table.texts, at);
    if (!place) return false;
    text = file_->readUpTo(*place, kMaxTextSize);
    const std::size_t end = text.find('\0');
    if (end == std::string::npos) return false;
    text.resize(end);
    return true;
}

bool ElfFile::readTable(DynamicTable& dynamic) const {
    const auto found = std::ranges::find(segments_, std::uint64_t{PT_DYNAMIC}, &Segment::type);
    if (found == segments_.end()) return true;
    std::string table;
    if (found->size > kMaxDynamicSize || !file_->read(found->offset, found->size, table)) return false;

    const std::size_t width = wide_ ? 8 : 4;
    for (std::size_t at = 0; at + 2 * width <= table.size(); at += 2 * width) {
        const std::uint64_t tag = number(table, at, width);
        const std::uint64_t value = number(table, at + width, width);
        if (tag == DT_NULL) break;
        if (tag == DT_NEEDED && dynamic.needed.size() < kMaxNeeded) dynamic.needed.push_back(value);
        if (tag == DT_SONAME) dynamic.soname = value;
        if (tag == DT_STRTAB) dynamic.texts = offsetOf(value);
        if (tag == DT_VERDEF) dynamic.versions = offsetOf(value);
        if (tag == DT_VERDEFNUM) dynamic.versionCount = value;
    }
    return true;
}

bool ElfFile::readDynamic(Dynamic& dynamic) const {
    DynamicTable table;
    if (!readTable(table)) return false;
    if (table.soname && !readText(table, *table.soname, dynamic.soname)) return false;
    return std::ranges::all_of(
        table.needed, [&](std::uint64_t at) { return readText(table, at, dynamic.needed.emplace_back()); });
}

// The entries have the same form in files of both classes. Each leads to the next one and to its name.
bool ElfFile::readVersions(std::vector<std::string>& names) const {
    DynamicTable table;
    if (!readTable(table) || table.versionCount > kMaxVersions) return false;
    Count at = table.versions;
    if (!at && table.versionCount > 0) return false;
    for (std::uint64_t i = 0; i < table.versionCount; ++i) {
        std::string entry;
        std::string name;
        if (!at || !file_->read(*at, sizeof(Elf64_Verdef), entry)) return false;
        const Count nameAt = sum(at, number(entry, offsetof(Elf64_Verdef, vd_aux), 4));
        if (!nameAt || !file_->read(*nameAt, sizeof(Elf64_Verdaux), name)) return false;
        // The first entry is usually the library itself.
        const bool library = (number(entry, offsetof(Elf64_Verdef, vd_flags), 2) & VER_FLG_BASE) != 0;
        if (!library && !readText(table, number(name, 0, 4), names.emplace_back())) return false;
        at = sum(at, number(entry, offsetof(Elf64_Verdef, vd_next), 4));
    }
    return true;
}

void ElfFile::addNotes(const Segment& place, Notes& notes) const {
    constexpr std::uint64_t kHeader = 12;
    const std::string bytes = file_->readUpTo(place.offset, std::min(place.size, kMaxNoteSize));
    const std::size_t alignment = place.alignment == 8 ? 8 : 4;
    for (std::string_view rest = bytes; rest.size() >= kHeader;) {
        const std::uint64_t nameSize = number(rest, 0, 4);
        const std::uint64_t size = number(rest, 4, 4);
        const std::uint64_t type = number(rest, 8, 4);
        const std::uint64_t start = aligned(kHeader + nameSize, alignment);
        if (start + size > rest.size()) break;
        const std::string_view owner = rest.substr(kHeader, nameSize);
        const std::string_view content = rest.substr(start, size);
        if (type == NT_GNU_BUILD_ID && owner == std::string_view("GNU\0", 4) && notes.buildId.empty())
            notes.buildId = hexadecimal(content);
        if (type == kPackageNote && owner == std::string_view("FDO\0", 4) && notes.package.empty())
            notes.package = content.substr(0, content.find('\0'));
        rest.remove_prefix(std::min<std::uint64_t>(aligned(start + size, alignment), rest.size()));
    }
}

ElfFile::Notes ElfFile::notes() const {
    Notes notes;
    for (const Segment& segment : segments_) {
        if (!notes.buildId.empty() && !notes.package.empty()) return notes;
        if (segment.type == PT_NOTE) addNotes(segment, notes);
    }
    // Kernel modules have no segments.
    std::vector<Segment> sections;
    std::string names;
    if (!segments_.empty() || !readSections(sections, names)) return notes;
    for (const Segment& section : sections) {
        if (section.type == SHT_NOTE) addNotes(section, notes);
    }
    return notes;
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

// The last segment that can only be read; or else the one with the code, where older linkers place constants.
std::optional<ElfFile::Place> ElfFile::constantData() const {
    std::optional<Place> data;
    bool withCode = true;
    for (const Segment& segment : segments_) {
        if (segment.type != PT_LOAD || (segment.flags & PF_W) != 0) continue;
        const bool code = (segment.flags & PF_X) != 0;
        if (code && (data || !withCode)) continue;
        data = Place{segment.offset, segment.size};
        withCode = code;
    }
    return data;
}

std::optional<ElfFile::Place> ElfFile::segmentWith(std::string_view section) const {
    constexpr std::uint64_t kMaxBuildInfo = std::uint64_t{64} << 10;
    if (section == ".rodata") return constantData();
    if (section != ".data" && section != ".data.rel.ro" && section != ".go.buildinfo") return std::nullopt;
    std::optional<Place> data = writableData();
    if (data && section == ".go.buildinfo") data->size = std::min(data->size, kMaxBuildInfo);
    return data;
}

ElfFile::Section ElfFile::findSection(std::string_view name, Place& place) const {
    if (!hasSections()) {
        const std::optional<Place> segment = segmentWith(name);
        place = segment.value_or(Place{});
        return segment ? Section::Found : Section::Missing;
    }
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
