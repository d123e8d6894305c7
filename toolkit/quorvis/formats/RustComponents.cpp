#include <algorithm>
#include <optional>

#include "toolkit/machine/packages/PackageUrl.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/formats/ElfFile.h"
#include "toolkit/quorvis/formats/Inflate.h"
#include "toolkit/quorvis/formats/Records.h"
#include "toolkit/quorvis/formats/WindowsProgram.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kSection = ".dep-v0";
constexpr std::uint64_t kMaxPackedSize = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaxListSize = std::uint64_t{8} << 20;

// Where the list of crates is. None if there is none, or if the headers are damaged.
std::optional<ElfFile::Place> findList(const RandomAccessFile& file, bool& damaged) {
    if (const auto elf = ElfFile::open(file, damaged)) {
        ElfFile::Place place;
        const ElfFile::Section section = elf->findSection(kSection, place);
        damaged = section == ElfFile::Section::Damaged;
        return section == ElfFile::Section::Found ? std::optional(place) : std::nullopt;
    }
    if (damaged) return std::nullopt;
    const auto program = WindowsProgram::read(file, damaged);
    if (!program) return std::nullopt;
    const auto found = std::ranges::find(program->sections, kSection, &WindowsProgram::Section::name);
    if (found == program->sections.end()) return std::nullopt;
    return ElfFile::Place{found->offset, found->size};
}

RecordRequest requestFor(std::size_t limit) {
    RecordRequest request;
    request.each = parseKeySteps("packages.*");
    request.keys = {{parseKeySteps("name"), false, true},
                    {parseKeySteps("version"), false, true},
                    {parseKeySteps("kind"), false, false},
                    {parseKeySteps("root"), false, false}};
    request.limit = limit;
    return request;
}

Component componentOf(const Record& record) {
    Component component;
    component.name = record.items.front();
    component.version = *record.values[0];
    component.role = record.values[2] == "true"    ? "main"
                     : record.values[1] == "build" ? "build"
                                                   : "dependency";
    component.purl = packageUrl("cargo", "", component.name, component.version, {});
    return component;
}

}  // namespace

ComponentList readRustComponents(const RandomAccessFile& file, std::string_view /*path*/,
                                 const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    bool damaged = false;
    const std::optional<ElfFile::Place> place = findList(file, damaged);
    if (damaged) list.problem = "the headers are damaged";
    if (!place) return list;
    std::string packed;
    std::string text;
    if (place->size > kMaxPackedSize) {
        list.tooLarge = true;
        list.problem = "the list of crates is larger than " + std::to_string(kMaxPackedSize) + " bytes";
        return list;
    }
    // Windows pads sections with zeros.
    if (!file.read(place->offset, place->size, packed) ||
        !inflate(packed, Packing::Zlib, kMaxListSize, text)) {
        list.problem = "the list of crates is damaged";
        return list;
    }
    const RecordRequest request = requestFor(limits.components);
    const Records found = readJsonRecords(text, request, checkProgress);
    if (!found.problem.empty()) list.problem = "the list of crates is damaged";
    list.tooMany = found.tooMany;
    for (const Record& record : found.records) list.components.push_back(componentOf(record));
    return list;
}

}  // namespace toolkit::quorvis
