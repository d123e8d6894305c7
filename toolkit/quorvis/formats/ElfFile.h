#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// What a program or library tells of itself. Files of both classes and byte orders are read, whatever this
// machine is; nothing that they say is trusted.
class ElfFile {
  public:
    // None when the file is of another kind, and when its header is damaged: `damaged` tells which. `file`
    // outlives it.
    static std::optional<ElfFile> open(const RandomAccessFile& file, bool& damaged);

    // As uname calls it; empty for one that is not known.
    std::string_view machine() const { return machine_; }

    // What the dynamic linker reads; false when it is damaged.
    struct Dynamic {
        std::string soname;
        std::vector<std::string> needed;
    };
    bool readDynamic(Dynamic& dynamic) const;

    // In lower-case hexadecimal digits; empty when there is none.
    std::string buildId() const;

    enum class Section : std::uint8_t { Found, Missing, TooLarge, Damaged };
    // The content of the first section with this name.
    Section readSection(std::string_view name, std::uint64_t limit, std::string& content) const;

  private:
    // A part of a program header or section header table entry.
    struct Segment {
        std::uint64_t type = 0;
        std::uint64_t offset = 0;
        std::uint64_t address = 0;
        std::uint64_t size = 0;  // in the file
        std::uint64_t alignment = 0;
        std::uint64_t name = 0;  // of a section: where it stands in the names
        std::uint64_t link = 0;
    };

    explicit ElfFile(const RandomAccessFile& file) : file_(&file) {}

    bool readHeader();
    bool readSegments();
    bool readSections(std::vector<Segment>& sections, std::string& names) const;
    Segment segment(std::string_view entry) const;
    Segment section(std::string_view entry) const;
    std::uint64_t number(std::string_view bytes, std::size_t offset, std::size_t width) const;
    // A number of the class's width that stands at `offset32` or `offset64`.
    std::uint64_t address(std::string_view bytes, std::size_t offset32, std::size_t offset64) const;
    std::optional<std::uint64_t> offsetOf(std::uint64_t address) const;
    bool readText(std::uint64_t offset, std::string& text) const;
    std::string buildIdIn(std::string_view notes, std::size_t alignment) const;

    const RandomAccessFile* file_;
    std::string header_;
    std::string_view machine_;
    bool wide_ = false;  // 64 bits
    bool littleEndian_ = false;
    std::vector<Segment> segments_;
};

}  // namespace toolkit::quorvis
