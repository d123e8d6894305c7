#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// Reads an ELF program or library of any class and byte order. The file is not trusted: all offsets and sizes are checked.
class ElfFile {
  public:
    // None if the file is not an ELF file, or if its header is damaged; then `damaged` is set. REQUIRES: `file` outlives
    // this object.
    static std::optional<ElfFile> open(const RandomAccessFile& file, bool& damaged);

    // The name that uname prints; empty for an unknown machine.
    std::string_view machine() const { return machine_; }

    // The dynamic section. False when it is damaged.
    struct Dynamic {
        std::string soname;
        std::vector<std::string> needed;
    };
    bool readDynamic(Dynamic& dynamic) const;

    // The names of the symbol versions that a library defines, in their order. False when they are damaged.
    bool readVersions(std::vector<std::string>& names) const;

    // What the notes tell. Missing information is empty.
    struct Notes {
        std::string buildId;  // in lower-case hexadecimal digits
        std::string package;  // JSON that describes the package that the file was built for
    };
    Notes notes() const;

    // A range of bytes of the file.
    struct Place {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
    };
    bool hasSections() const;
    // The first segment with data that may be changed.
    std::optional<Place> writableData() const;
    // Where an address of the running program is in the file.
    std::optional<std::uint64_t> offsetOf(std::uint64_t address) const;

    enum class Section : std::uint8_t { Found, Missing, TooLarge, Damaged };
    // Finds the first section with this name. If the file has no section headers, which programs can do without, it is the
    // segment in which linkers place a section of this name.
    Section findSection(std::string_view name, Place& place) const;
    // The content of the first section with this name.
    Section readSection(std::string_view name, std::uint64_t limit, std::string& content) const;

  private:
    // The fields of a program header or a section header.
    struct Segment {
        std::uint64_t type = 0;
        std::uint64_t offset = 0;
        std::uint64_t address = 0;
        std::uint64_t size = 0;  // in the file
        std::uint64_t alignment = 0;
        std::uint64_t name = 0;  // of a section: its offset in the section of names
        std::uint64_t link = 0;
        std::uint64_t flags = 0;  // of a program header
    };

    explicit ElfFile(const RandomAccessFile& file) : file_(&file) {}

    bool readHeader();
    bool readSegments();
    bool readSections(std::vector<Segment>& sections, std::string& names) const;
    Segment segment(std::string_view entry) const;
    Segment section(std::string_view entry) const;
    std::uint64_t number(std::string_view bytes, std::size_t offset, std::size_t width) const;
    // Reads an address at `offset32` or `offset64`, depending on the class of the file.
    std::uint64_t address(std::string_view bytes, std::size_t offset32, std::size_t offset64) const;
    // The entries of the dynamic section.
    struct DynamicTable {
        std::optional<std::uint64_t> soname;  // where the texts are, from the first text on
        std::vector<std::uint64_t> needed;
        std::optional<std::uint64_t> texts;  // where parts of the file are
        std::optional<std::uint64_t> versions;
        std::uint64_t versionCount = 0;
    };
    bool readTable(DynamicTable& table) const;
    bool readText(const DynamicTable& table, std::uint64_t at, std::string& text) const;
    void addNotes(const Segment& place, Notes& notes) const;
    std::optional<Place> constantData() const;
    std::optional<Place> segmentWith(std::string_view section) const;

    const RandomAccessFile* file_;
    std::string header_;
    std::string_view machine_;
    bool wide_ = false;  // 64 bits
    bool littleEndian_ = false;
    std::vector<Segment> segments_;
};

}  // namespace toolkit::quorvis
