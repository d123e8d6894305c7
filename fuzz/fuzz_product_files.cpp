// The readers of product files: each ends with or without a value and respects its limits.
#include <fcntl.h>

#include <cstdlib>
#include <string_view>

#include "fuzz/MemoryFile.h"
#include "toolkit/quorvis/facts/SwidTags.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/formats/ElfFile.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/formats/PackageNote.h"
#include "toolkit/quorvis/formats/Records.h"
#include "toolkit/quorvis/formats/ZipArchive.h"

namespace {

namespace quorvis = toolkit::quorvis;

constexpr std::uint64_t kLimit = 4096;  // bytes of a section or of a member of an archive

void must(bool holds) {
    if (!holds) std::abort();
}

void readProgram(const quorvis::RandomAccessFile& file) {
    bool damaged = false;
    const auto elf = quorvis::ElfFile::open(file, damaged);
    if (!elf) return;
    quorvis::ElfFile::Dynamic dynamic;
    elf->readDynamic(dynamic);
    const quorvis::ElfFile::Notes notes = elf->notes();
    bool whole = true;
    const quorvis::PackageNote note = quorvis::readPackageNote(notes.package, whole);
    must(whole || note.empty());
    std::vector<std::string> versions;
    elf->readVersions(versions);
    must(versions.size() <= 1000);
    std::string content;
    if (elf->readSection(".rodata", kLimit, content) == quorvis::ElfFile::Section::Found) {
        must(content.size() <= kLimit);
    }
}

void readArchive(const quorvis::RandomAccessFile& file) {
    std::vector<quorvis::ZipMember> members;
    quorvis::listZip(
        file, [](std::string_view name) { return !name.ends_with(".class"); }, members);
    for (const quorvis::ZipMember& member : members) {
        std::string content;
        if (quorvis::readZipMember(file, member, kLimit, content)) must(content.size() <= kLimit);
    }
}

void readComponents(const quorvis::RandomAccessFile& file) {
    constexpr quorvis::ComponentLimits kLimits{20, std::uint64_t{1} << 20};
    for (const char* const name : {"go", "rust", "jar"}) {
        const auto* const format = quorvis::componentFormat(name);
        must(format->readFile(file, "/f", kLimits, {}).components.size() <= kLimits.components);
    }
}

void readMetadata(std::string_view text) {
    constexpr quorvis::ComponentLimits kLimits{20, std::uint64_t{1} << 20};
    for (const char* const name :
         {"composer", "dotnet", "gem", "npm", "npm-lock", "nuget", "perl", "python", "r"}) {
        const auto* const format = quorvis::componentFormat(name);
        must(format->readText(text, "/f", kLimits, {}).components.size() <= kLimits.components);
    }
}

void readProducts(const quorvis::RandomAccessFile& file) {
    std::string damage;
    quorvis::readJar(file, damage);
    quorvis::readWindowsProgram(file, damage);
    quorvis::readPythonMetadata(file);
}

// Reads the text in every format of documents, with and without records.
void readRecords(std::string_view text) {
    constexpr std::size_t kMaxItems = 20;
    for (const char* const each : {"packages.*", "*", "/product", "."}) {
        quorvis::RecordRequest request;
        request.each = quorvis::parseKeySteps(each);
        request.keys = {{quorvis::parseKeySteps("version"), false, true},
                        {quorvis::parseKeySteps("tags.1"), false, false},
                        {{}, true, false}};
        request.all = each[0] == '*';
        request.emptyClears = request.all;
        request.limit = kMaxItems;
        for (const char* const format :
             {"headers", "ini", "json", "manifest", "properties", "systemd", "toml", "yaml"}) {
            const quorvis::Records found = quorvis::readRecords(format, text, request);
            std::size_t items = 0;
            for (const quorvis::Record& record : found.records) items += record.items.size();
            must(items <= kMaxItems);
        }
    }
}

void readTexts(std::string_view text) {
    std::string problem;
    readRecords(text);
    readMetadata(text);
    for (const char* const select : {"/*/dependency[@scope='x'][2]/*", "project/*[version='1']/@id"})
        must(quorvis::selectValues(text, *quorvis::XmlSelection::parse(select, problem), 3).values.size() <=
             3);
    const auto selection = quorvis::XmlSelection::parse("/project/dependency[2]/@version", problem);
    must(quorvis::selectValues(text, *selection, 3).values.size() <= 3);
    quorvis::parseSwidTag(text, problem);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile memory(data, size);
    const quorvis::RandomAccessFile file(
        kest::Descriptor(::open(memory.path().c_str(), O_RDONLY | O_CLOEXEC)));
    readProgram(file);
    readArchive(file);
    readProducts(file);
    readComponents(file);
    readTexts({reinterpret_cast<const char*>(data), size});
    return 0;
}
