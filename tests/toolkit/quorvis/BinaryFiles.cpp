#include "tests/toolkit/quorvis/BinaryFiles.h"

#include <elf.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/toolkit/machine/packages/RpmHeaderBytes.h"

namespace quorvistest {

namespace {

template <class Record>
std::string bytesOf(const Record& record) {
    std::string bytes(sizeof record, '\0');
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

void pad(std::string& bytes, std::size_t alignment) {
    while (bytes.size() % alignment != 0) bytes += '\0';
}

Elf64_Phdr segmentOf(std::uint32_t type, std::uint64_t offset, std::uint64_t size) {
    Elf64_Phdr segment{};
    segment.p_type = type;
    segment.p_offset = segment.p_vaddr = offset;
    segment.p_filesz = segment.p_memsz = size;
    segment.p_align = 8;
    return segment;
}

Elf64_Shdr sectionOf(std::uint32_t name, std::uint32_t type, std::uint64_t offset, std::uint64_t size) {
    Elf64_Shdr section{};
    section.sh_name = name;
    section.sh_type = type;
    section.sh_offset = offset;
    section.sh_size = size;
    return section;
}

Elf64_Dyn entryOf(std::int64_t tag, std::uint64_t value) {
    Elf64_Dyn entry{};
    entry.d_tag = tag;
    entry.d_un.d_val = value;
    return entry;
}

// A block of a version resource with key and value in UTF-16.
std::string block(const std::string& key, const std::string& value, const std::string& children) {
    const auto wide = [](const std::string& text) {
        std::string units;
        for (const char c : text) units.append(1, c).append(1, '\0');
        return units.append(2, '\0');
    };
    std::string body = std::string(6, '\0') + wide(key);
    pad(body, 4);
    if (!value.empty()) body += wide(value);
    pad(body, 4);
    body += children;
    const std::size_t valueSize = value.empty() ? 0 : value.size() + 1;
    return body.replace(0, 6, number(body.size(), 2) + number(valueSize, 2) + number(1, 2));
}

// An archive with one uncompressed member.
std::string archiveOf(const std::string& name, const std::string& content) {
    const std::string size = number(content.size(), 4);
    const std::string sizes = number(0, 4) + size + size + number(name.size(), 2) + number(0, 2);
    const std::string member = std::string("PK\x03\x04") + number(10, 2) + std::string(8, '\0') + sizes;
    const std::string entry = std::string("PK\x01\x02") + number(10, 2) + number(10, 2) +
                              std::string(8, '\0') + sizes + std::string(14, '\0') + name;
    const std::string members = member + name + content;
    return members + entry + std::string("PK\x05\x06") + std::string(4, '\0') + number(1, 2) + number(1, 2) +
           number(entry.size(), 4) + number(members.size(), 4) + number(0, 2);
}

}  // namespace

std::string elfFile(const std::string& section, const std::string& content, const std::string& soname) {
    const std::string names = '\0' + section + '\0' + ".shstrtab" + '\0';
    const std::string texts = '\0' + soname + '\0';
    const std::uint64_t dynamicAt = sizeof(Elf64_Ehdr) + 2 * sizeof(Elf64_Phdr);
    const std::uint64_t dynamicSize = soname.empty() ? 0 : 3 * sizeof(Elf64_Dyn);
    const std::uint64_t textsAt = dynamicAt + dynamicSize;
    const std::uint64_t contentAt = textsAt + texts.size();
    const std::uint64_t namesAt = contentAt + content.size();
    const std::uint64_t end = namesAt + names.size();

    Elf64_Ehdr header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = ELFCLASS64;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_ident[EI_VERSION] = EV_CURRENT;
    header.e_type = ET_DYN;
    header.e_machine = EM_X86_64;
    header.e_version = EV_CURRENT;
    header.e_ehsize = sizeof(Elf64_Ehdr);
    header.e_phoff = sizeof(Elf64_Ehdr);
    header.e_phentsize = sizeof(Elf64_Phdr);
    header.e_phnum = 2;
    header.e_shoff = end;
    header.e_shentsize = sizeof(Elf64_Shdr);
    header.e_shnum = 3;
    header.e_shstrndx = 2;

    std::string file = bytesOf(header) + bytesOf(segmentOf(PT_LOAD, 0, end)) +
                       bytesOf(segmentOf(soname.empty() ? PT_NULL : PT_DYNAMIC, dynamicAt, dynamicSize));
    if (!soname.empty()) {
        file += bytesOf(entryOf(DT_SONAME, 1)) + bytesOf(entryOf(DT_STRTAB, textsAt)) +
                bytesOf(entryOf(DT_NULL, 0));
    }
    const auto nameAt = static_cast<std::uint32_t>(section.size() + 2);
    return file + texts + content + names + bytesOf(sectionOf(0, SHT_NULL, 0, 0)) +
           bytesOf(sectionOf(1, SHT_PROGBITS, contentAt, content.size())) +
           bytesOf(sectionOf(nameAt, SHT_STRTAB, namesAt, names.size()));
}

std::string jarFile(const std::string& manifest) {
    return archiveOf("META-INF/MANIFEST.MF", manifest);
}

std::string mavenFile(const std::string& group, const std::string& artifact, const std::string& version) {
    return archiveOf("META-INF/maven/" + group + "/" + artifact + "/pom.properties",
                     "groupId=" + group + "\nartifactId=" + artifact + "\nversion=" + version + "\n");
}

std::string archiveWith(const std::string& name, const std::string& content) {
    return archiveOf(name, content);
}

std::string goProgram(const std::string& module, const std::string& version, const std::string& others) {
    const auto withLength = [](const std::string& text) {
        std::string length;
        std::size_t size = text.size();
        for (; size >= 128; size /= 128) length += static_cast<char>(size % 128 + 128);
        return length + static_cast<char>(size) + text;
    };
    const std::string modules = std::string(16, '\x01') + "mod\t" + module + "\t" + version + "\t\n" +
                                others + std::string(16, '\x02');
    const std::string header = std::string("\xff Go buildinf:", 14) + '\x08' + '\x02' + std::string(16, '\0');
    return elfFile(".go.buildinfo", header + withLength("go1.21.3") + withLength(modules), "");
}

std::string rustProgram(const std::string& crates) {
    uLongf size = ::compressBound(crates.size());
    std::string packed(size, '\0');
    if (::compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                   reinterpret_cast<const Bytef*>(crates.data()), crates.size()) != Z_OK)
        throw std::runtime_error("compress");
    packed.resize(size);
    return elfFile(".dep-v0", packed, "");
}

std::string windowsProgram(const std::string& name, const std::string& value) {
    constexpr std::uint64_t kAddress = 0x1000;  // of the resources in memory
    constexpr std::uint64_t kOffset = 0x200;    // of the resources in the file
    constexpr std::uint64_t kDirectories = 3 * 24;
    constexpr std::uint64_t kSubdirectory = 0x80000000;
    const std::string version = block(
        "VS_VERSION_INFO", "", block("StringFileInfo", "", block("040904b0", "", block(name, value, ""))));
    const auto directory = [](std::uint64_t id, std::uint64_t leadsTo) {
        return std::string(12, '\0') + number(0, 2) + number(1, 2) + number(id, 4) + number(leadsTo, 4);
    };
    const std::string resources = directory(16, kSubdirectory | 24) + directory(1, kSubdirectory | 48) +
                                  directory(0x409, kDirectories) + number(kAddress + kDirectories + 16, 4) +
                                  number(version.size(), 4) + std::string(8, '\0') + version;

    std::string optional = number(0x20B, 2) + std::string(106, '\0') + number(16, 4) + std::string(16, '\0') +
                           number(kAddress, 4) + number(resources.size(), 4) + std::string(13 * 8, '\0');
    std::string file = "MZ" + std::string(58, '\0') + number(64, 4) + std::string("PE\0\0", 4) +
                       number(0x8664, 2) + number(1, 2) + std::string(12, '\0') + number(optional.size(), 2) +
                       number(0x2022, 2) + optional;
    file += std::string(".rsrc\0\0\0", 8) + number(resources.size(), 4) + number(kAddress, 4) +
            number(resources.size(), 4) + number(kOffset, 4) + std::string(16, '\0');
    file.resize(kOffset);
    return file + resources;
}

std::string rpmHeader(const std::string& name, const std::string& version, const std::string& source,
                      const std::string& file) {
    constexpr unsigned kNumber = 4;
    constexpr unsigned kText = 6;
    constexpr unsigned kTexts = 8;
    const std::size_t dash = version.find('-');
    const auto text = [](const std::string& content) { return content + '\0'; };
    std::vector<toolkit::RpmEntry> entries;
    if (!file.empty())
        entries.push_back({1116, kNumber, toolkit::number(0, 4)});  // the index of its directory
    entries.push_back({1000, kText, text(name)});
    entries.push_back({1001, kText, text(version.substr(0, dash))});
    entries.push_back({1002, kText, text(version.substr(dash + 1))});
    entries.push_back({1022, kText, text("x86_64")});
    entries.push_back({1044, kText, text(source + "-1.0-1.src.rpm")});
    if (!file.empty()) {
        const std::size_t slash = file.rfind('/') + 1;
        entries.push_back({1117, kTexts, text(file.substr(slash))});
        entries.push_back({1118, kTexts, text(file.substr(0, slash))});
    }
    return toolkit::rpmHeader(entries);
}

}  // namespace quorvistest
