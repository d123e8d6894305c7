#pragma once

#include <elf.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace toolkit::quorvis {

// Builds a small library for any machine.
struct ElfBuilder {
    bool wide = true;
    bool littleEndian = true;
    std::uint64_t machine = EM_X86_64;
    std::string readOnlyData = std::string("\0before\0Product 3.1.4\0Product 3.1.4\0Product 2.0\0", 48);
    bool segments = true;
    bool sections = true;

    std::string build() const {
        const std::string texts("\0libproduct.so.3\0libc.so.6\0libm.so.6\0", 38);
        const std::string names("\0.rodata\0.shstrtab\0.note\0.bss\0", 31);
        const std::string note = put(4, 4) + put(5, 4) + put(NT_GNU_BUILD_ID, 4) + std::string("GNU\0", 4) +
                                 "\x01\x23\xAB\xCD\xEF" + std::string(3, '\0');
        const std::size_t headerSize = wide ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr);
        const std::size_t segmentsAt = headerSize;
        const std::size_t textsAt = segmentsAt + 4 * (wide ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr));
        const std::size_t dynamicAt = textsAt + texts.size();
        const std::string dynamic = entry(DT_NEEDED, 17) + entry(DT_NEEDED, 27) + entry(DT_SONAME, 1) +
                                    entry(DT_STRTAB, kBase + textsAt) + entry(DT_NULL, 0);
        const std::size_t noteAt = dynamicAt + dynamic.size();
        const std::size_t dataAt = noteAt + note.size();
        const std::size_t namesAt = dataAt + readOnlyData.size();
        const std::size_t sectionsAt = namesAt + names.size();

        std::string file = header(segmentsAt, sectionsAt);
        file += segment(PT_LOAD, 0, sectionsAt, 4096) + segment(PT_DYNAMIC, dynamicAt, dynamic.size(), 8) +
                segment(PT_NOTE, noteAt, note.size(), 4) +
                segment(PT_LOAD, dynamicAt, dynamic.size(), 4096, PF_R | PF_W);
        file += texts + dynamic + note + readOnlyData + names;
        file += section(0, SHT_NULL, 0, 0) + section(1, SHT_PROGBITS, dataAt, readOnlyData.size()) +
                section(9, SHT_STRTAB, namesAt, names.size()) + section(19, SHT_NOTE, noteAt, note.size()) +
                section(25, SHT_NOBITS, 0, 100);
        return file;
    }

  private:
    static constexpr std::uint64_t kBase = 0x10000;  // where the file is loaded

    std::string put(std::uint64_t value, std::size_t width) const {
        std::string bytes;
        for (std::size_t i = 0; i < width; ++i) {
            const std::size_t shift = 8 * (littleEndian ? i : width - 1 - i);
            bytes += static_cast<char>(value >> shift & 0xFFU);
        }
        return bytes;
    }
    std::string word(std::uint64_t value) const { return put(value, wide ? 8 : 4); }
    std::string entry(std::uint64_t tag, std::uint64_t value) const { return word(tag) + word(value); }

    std::string header(std::size_t segmentsAt, std::size_t sectionsAt) const {
        std::string file = ELFMAG;
        file += static_cast<char>(wide ? ELFCLASS64 : ELFCLASS32);
        file += static_cast<char>(littleEndian ? ELFDATA2LSB : ELFDATA2MSB);
        file += '\x01';
        file.resize(EI_NIDENT, '\0');
        file += put(ET_DYN, 2) + put(machine, 2) + put(1, 4) + word(0);
        file += word(segments ? segmentsAt : 0) + word(sections ? sectionsAt : 0) + put(0, 4);
        file += put(wide ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr), 2);
        file += put(wide ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr), 2) + put(segments ? 4 : 0, 2);
        file += put(wide ? sizeof(Elf64_Shdr) : sizeof(Elf32_Shdr), 2) + put(sections ? 5 : 0, 2) + put(2, 2);
        return file;
    }

    std::string segment(std::uint64_t type, std::uint64_t offset, std::uint64_t size, std::uint64_t alignment,
                        std::uint64_t flags = PF_R) const {
        const std::string place = word(offset) + word(kBase + offset) + word(0) + word(size) + word(size);
        return wide ? put(type, 4) + put(flags, 4) + place + word(alignment)
                    : put(type, 4) + place + put(flags, 4) + word(alignment);
    }

    std::string section(std::uint64_t name, std::uint64_t type, std::uint64_t offset,
                        std::uint64_t size) const {
        return put(name, 4) + put(type, 4) + word(0) + word(0) + word(offset) + word(size) + put(0, 4) +
               put(0, 4) + word(4) + word(0);
    }
};

}  // namespace toolkit::quorvis
