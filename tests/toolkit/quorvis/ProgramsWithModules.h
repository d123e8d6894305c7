// Programs that contain a list of the modules or crates that they were built from.
#pragma once

#include <elf.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "tests/toolkit/quorvis/ArchiveBuilder.h"
#include "tests/toolkit/quorvis/BinaryFiles.h"

namespace toolkit::quorvis {

inline std::string put(std::uint64_t value, std::size_t width, bool big = false) {
    std::string bytes = littleEndianBytes(value, width);
    if (big) std::ranges::reverse(bytes);
    return bytes;
}

// A program for any machine with one writable segment at kBase and no sections.
inline constexpr std::uint64_t kBase = 0x400000;
inline std::string elfProgram(const std::string& data, bool wide = true, bool big = false) {
    const auto word = [&](std::uint64_t value) { return put(value, wide ? 8 : 4, big); };
    std::string file = ELFMAG;
    file += static_cast<char>(wide ? ELFCLASS64 : ELFCLASS32);
    file += static_cast<char>(big ? ELFDATA2MSB : ELFDATA2LSB);
    file += '\x01';
    file.resize(EI_NIDENT, '\0');
    file += put(ET_EXEC, 2, big) + put(EM_X86_64, 2, big) + put(1, 4, big) + word(0);
    file += word(wide ? 64 : 52) + word(0) + put(0, 4, big) + put(wide ? 64 : 52, 2, big);
    file += put(wide ? 56 : 32, 2, big) + put(1, 2, big) + put(0, 6, big);
    constexpr std::size_t kDataAt = 128;
    const std::string place = word(kDataAt) + word(kBase) + word(0) + word(data.size()) + word(data.size());
    file += wide ? put(PT_LOAD, 4, big) + put(PF_R | PF_W, 4, big) + place + word(16)
                 : put(PT_LOAD, 4, big) + place + put(PF_R | PF_W, 4, big) + word(16);
    file.resize(kDataAt, '\0');
    return file + data;
}

// A program for Windows with one section.
inline std::string windowsProgramWith(const std::string& name, const std::string& data) {
    std::string file = "MZ";
    file.resize(60, '\0');
    constexpr std::size_t kOptionalSize = 112;
    file += put(64, 4) + std::string("PE\0\0", 4) + put(0x8664, 2) + put(1, 2) + put(0, 12);
    file += put(kOptionalSize, 2) + put(0x22, 2) + put(0x20B, 2) + std::string(22, '\0') + put(kBase, 8);
    file.resize(64 + 24 + kOptionalSize, '\0');
    std::string paddedName = name;
    paddedName.resize(8, '\0');
    file += paddedName + put(data.size(), 4) + put(0x1000, 4) + put(data.size(), 4) + put(256, 4) +
            std::string(12, '\0') + put(0xC0000040, 4);
    file.resize(256, '\0');
    return file + data;
}

inline constexpr char kModules[] =
    "path\texample.com/tool/cmd/x\n"
    "mod\texample.com/tool\tv1.2.3\th1:abc=\n"
    "dep\tgolang.org/x/sys\tv0.1.0\th1:def=\n"
    "dep\tgithub.com/old/lib\tv1.0.0\n"
    "=>\tgithub.com/new/lib\tv2.0.0+incompatible\th1:ghi=\n"
    "dep\texample.com/local\tv3.0.0\n"
    "=>\t./local\n"
    "build\t-compiler=gc\n"
    "build\t-ldflags=\"-X 'main.a=b c'\"\n"
    "build\tvcs.revision=0123abc\n";
const std::string kFound =
    "main example.com/tool 1.2.3 pkg:golang/example.com/tool@v1.2.3\n"
    "dependency golang.org/x/sys 0.1.0 pkg:golang/golang.org/x/sys@v0.1.0\n"
    "dependency github.com/new/lib 2.0.0 pkg:golang/github.com/new/lib@v2.0.0%2Bincompatible\n"
    "dependency example.com/local - pkg:golang/example.com/local\n"
    "toolchain stdlib 1.21.3 pkg:golang/stdlib@1.21.3\n";

inline std::string withSentinels(const std::string& modules) {
    return std::string(16, '\x01') + modules + std::string(16, '\x02');
}

inline std::string withLength(const std::string& text) {
    std::string length;
    std::size_t size = text.size();
    for (; size >= 128; size /= 128) length += static_cast<char>(size % 128 + 128);
    return length + static_cast<char>(size) + text;
}

// The build information since Go 1.18.
inline std::string inlineInfo(const std::string& version = "go1.21.3",
                              const std::string& modules = kModules) {
    return std::string("\xff Go buildinf:", 14) + '\x08' + '\x02' + std::string(16, '\0') +
           withLength(version) + withLength(withSentinels(modules));
}

// The build information before Go 1.18, for a program at `address`.
inline std::string pointedInfo(std::uint64_t address, std::size_t width, bool big) {
    const std::string version = "go1.17.2";
    const std::string modules = withSentinels(kModules);
    const auto word = [&](std::uint64_t value) { return put(value, width, big); };
    std::string info =
        std::string("\xff Go buildinf:", 14) + static_cast<char>(width) + (big ? '\x01' : '\0');
    info += word(address + 32) + word(address + 32 + 2 * width);
    info.resize(32, '\0');
    const std::uint64_t textsAt = address + 32 + 4 * width;
    info += word(textsAt) + word(version.size()) + word(textsAt + version.size()) + word(modules.size());
    return info + version + modules;
}

inline std::string deflated(const std::string& text) {
    uLongf size = ::compressBound(text.size());
    std::string packed(size, '\0');
    if (::compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                   reinterpret_cast<const Bytef*>(text.data()), text.size()) != Z_OK)
        throw std::runtime_error("compress");
    packed.resize(size);
    return packed;
}

}  // namespace toolkit::quorvis
