#pragma once

#include <elf.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "toolkit/quorvis/formats/ElfFile.h"

namespace toolkit::quorvis {

using Section = ElfFile::Section;

// Where the tables and contents of an Elf are.
inline constexpr std::uint64_t kSegments = 64;
inline constexpr std::uint64_t kSections = 0x1000;
inline constexpr std::uint64_t kContents = 0x2000;

inline std::string bytesOf(std::uint64_t number, std::size_t width) {
    std::string bytes;
    for (; width > 0; --width, number >>= 8U) bytes += static_cast<char>(number & 0xFFU);
    return bytes;
}

// A file of 64 bits and little endian, put together field by field. Bytes that are not written are zero.
class Elf {
  public:
    Elf() : descriptor_(::memfd_create("elf", MFD_CLOEXEC)) {
        put(0, ELFMAG "\x02\x01\x01");
        put(0x20, bytesOf(kSegments, 8) + bytesOf(kSections, 8));
        put(0x36, bytesOf(56, 2) + bytesOf(0, 2) + bytesOf(64, 2) + bytesOf(0, 2) + bytesOf(0, 2));
    }
    ~Elf() { ::close(descriptor_); }
    Elf(const Elf&) = delete;
    Elf& operator=(const Elf&) = delete;

    void put(std::uint64_t at, const std::string& bytes) const {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
                  ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(at)));
    }
    void cut(std::uint64_t size) const { EXPECT_EQ(0, ::ftruncate(descriptor_, static_cast<off_t>(size))); }

    void segmentSize(std::uint64_t size) const { put(0x36, bytesOf(size, 2)); }
    void segmentCount(std::uint64_t count) const { put(0x38, bytesOf(count, 2)); }
    void sectionSize(std::uint64_t size) const { put(0x3A, bytesOf(size, 2)); }
    void sectionCount(std::uint64_t count) const { put(0x3C, bytesOf(count, 2)); }
    void namesSection(std::uint64_t index) const { put(0x3E, bytesOf(index, 2)); }

    void segment(std::uint64_t type, std::uint64_t offset, std::uint64_t address, std::uint64_t size,
                 std::uint64_t alignment = 4, std::uint64_t flags = PF_R) {
        put(kSegments + 56 * segments_++, bytesOf(type, 4) + bytesOf(flags, 4) + bytesOf(offset, 8) +
                                              bytesOf(address, 8) + bytesOf(0, 8) + bytesOf(size, 8) +
                                              bytesOf(size, 8) + bytesOf(alignment, 8));
        segmentCount(segments_);
    }
    void firstSegmentHas(std::uint64_t size) const { put(kSegments + 0x20, bytesOf(size, 8)); }

    void section(std::uint64_t name, std::uint64_t type, std::uint64_t offset, std::uint64_t size,
                 std::uint64_t link = 0, std::uint64_t alignment = 4) {
        put(kSections + 64 * sections_++, bytesOf(name, 4) + bytesOf(type, 4) + bytesOf(0, 16) +
                                              bytesOf(offset, 8) + bytesOf(size, 8) + bytesOf(link, 4) +
                                              bytesOf(UINT32_MAX, 4) + bytesOf(alignment, 8) + bytesOf(0, 8));
        sectionCount(sections_);
    }
    // The table of the dynamic linker in a file of 2 MiB that is loaded at address 0.
    void dynamic(const std::vector<std::pair<std::uint64_t, std::uint64_t>>& entries) {
        std::string table;
        for (const auto& [tag, value] : entries) table += bytesOf(tag, 8) + bytesOf(value, 8);
        put(kContents, table);
        cut(std::uint64_t{1} << 21U);
        segment(PT_DYNAMIC, kContents, 0, table.size());
        segment(PT_LOAD, 0, 0, std::uint64_t{1} << 21U);
    }

    std::string opened() const {
        bool damaged = true;
        const RandomAccessFile parts = file();
        const bool open = ElfFile::open(parts, damaged).has_value();
        if (open) return "opened";
        return damaged ? "damaged" : "no ELF file";
    }
    std::string machine() const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        return std::string(elf ? elf->machine() : "damaged");
    }
    // "offset size" of the writable data, or "none".
    std::string writableData() const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        const auto place = elf ? elf->writableData() : std::nullopt;
        return place ? std::to_string(place->offset) + " " + std::to_string(place->size) : "none";
    }
    // "offset size" of what stands for this section, or "none".
    std::string placeOf(std::string_view section) const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        ElfFile::Place place;
        if (!elf || elf->findSection(section, place) != Section::Found) return "none";
        return std::to_string(place.offset) + " " + std::to_string(place.size);
    }
    bool hasSections() const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        return elf && elf->hasSections();
    }
    // "soname needed...", or "damaged".
    std::string dynamic() const {
        ElfFile::Dynamic found;
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        if (!elf || !elf->readDynamic(found)) return "damaged";
        std::string text = found.soname;
        for (const std::string& needed : found.needed) text += " " + needed;
        return text;
    }
    std::string buildId() const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        return elf ? elf->notes().buildId : "damaged";
    }
    std::string packageNote() const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        return elf ? elf->notes().package : "damaged";
    }
    // "VERSION VERSION ", or "damaged".
    std::string versions() const {
        std::vector<std::string> names;
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        if (!elf || !elf->readVersions(names)) return "damaged";
        std::string text;
        for (const std::string& name : names) text += name + " ";
        return text;
    }
    Section read(std::string_view name, std::uint64_t limit, std::string* content = nullptr) const {
        bool damaged = false;
        const RandomAccessFile parts = file();
        const auto elf = ElfFile::open(parts, damaged);
        std::string bytes;
        const Section found = elf ? elf->readSection(name, limit, bytes) : Section::Damaged;
        if (content != nullptr) *content = bytes;
        return found;
    }

  private:
    RandomAccessFile file() const { return RandomAccessFile(kest::Descriptor(::dup(descriptor_))); }

    int descriptor_;
    std::uint64_t segments_ = 0;
    std::uint64_t sections_ = 0;
};

inline std::string note(std::uint64_t type, const std::string& name, const std::string& content,
                        std::size_t alignment = 4) {
    std::string bytes = bytesOf(name.size(), 4) + bytesOf(content.size(), 4) + bytesOf(type, 4) + name;
    bytes.resize((bytes.size() + alignment - 1) / alignment * alignment, '\xEE');
    bytes += content;
    bytes.resize((bytes.size() + alignment - 1) / alignment * alignment, '\xEE');
    return bytes;
}

}  // namespace toolkit::quorvis
