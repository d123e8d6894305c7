#include <algorithm>
#include <optional>
#include <vector>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Utf8.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/formats/WindowsProgram.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kVersionType = 16;  // RT_VERSION
constexpr std::uint64_t kMaxResourceSize = std::uint64_t{1} << 20;
constexpr std::uint64_t kSubdirectory = 0x80000000U;

// The target of an entry of a resource directory: the entry of `type`, or the first one without a type. Places are relative
// to the start of the resources.
std::optional<std::uint64_t> follow(const RandomAccessFile& file, std::uint64_t resources,
                                    std::uint64_t place, std::optional<std::uint64_t> type) {
    constexpr std::size_t kHeader = 16;
    constexpr std::size_t kEntry = 8;
    std::string header;
    if (!file.read(resources + place, kHeader, header)) return std::nullopt;
    const std::uint64_t count = littleEndian(header, 12, 2) + littleEndian(header, 14, 2);
    const std::string entries = file.readUpTo(resources + place + kHeader, count * kEntry);
    for (std::size_t at = 0; at + kEntry <= entries.size(); at += kEntry) {
        if (!type || littleEndian(entries, at, 4) == *type) return littleEndian(entries, at + 4, 4);
    }
    return std::nullopt;
}

// The version resource; empty if there is none. None if the resources are damaged.
std::optional<std::string> versionResource(const RandomAccessFile& file, const WindowsProgram& program) {
    if (program.resources == 0) return "";
    const std::optional<std::uint64_t> resources = program.offsetOf(program.resources);
    if (!resources) return std::nullopt;
    // By type, then by name, then by language.
    std::optional<std::uint64_t> place = follow(file, *resources, 0, kVersionType);
    if (!place) return "";
    for (int level = 0; level < 2; ++level) {
        if ((*place & kSubdirectory) == 0) return std::nullopt;
        place = follow(file, *resources, *place & ~kSubdirectory, std::nullopt);
        if (!place) return std::nullopt;
    }
    std::string entry;
    std::string bytes;
    if (!file.read(*resources + *place, 16, entry)) return std::nullopt;
    const std::optional<std::uint64_t> offset = program.offsetOf(littleEndian(entry, 0, 4));
    const std::uint64_t size = littleEndian(entry, 4, 4);
    if (!offset || size > kMaxResourceSize || !file.read(*offset, size, bytes)) return std::nullopt;
    return bytes;
}

// A block of a version resource: a header, a key, a value and nested blocks.
struct Block {
    std::string key;
    std::string_view value;
    std::string_view children;
};

std::size_t aligned(std::size_t size) {
    return (size + 3) / 4 * 4;
}

// Takes the block at the front. False at the end or if the block is damaged.
bool takeBlock(std::string_view& rest, Block& block) {
    constexpr std::size_t kHeader = 6;
    if (rest.size() < kHeader) return false;
    const std::size_t size = littleEndian(rest, 0, 2);
    if (size < kHeader || size > rest.size()) return false;
    const std::string_view whole = rest.substr(0, size);
    const bool isText = littleEndian(whole, 4, 2) == 1;
    const std::u16string key = utf16Units(whole.substr(kHeader));
    const std::size_t valueAt = std::min(aligned(kHeader + 2 * (key.size() + 1)), size);
    const std::size_t valueSize = littleEndian(whole, 2, 2) * (isText ? 2 : 1);
    block.key = utf8FromUtf16(key);
    block.value = whole.substr(valueAt, valueSize);
    block.children = whole.substr(std::min(aligned(valueAt + block.value.size()), size));
    rest.remove_prefix(std::min(aligned(size), rest.size()));
    return true;
}

// The version numbers of the fixed part of the resource: "1.2.3.4". Empty if there are none.
std::string fixedVersion(std::string_view value) {
    constexpr std::uint64_t kMark = 0xFEEF04BD;
    if (value.size() < 16 || littleEndian(value, 0, 4) != kMark) return {};
    std::string version;
    for (const std::size_t at : {10U, 8U, 14U, 12U})
        version.append(version.empty() ? "" : ".").append(std::to_string(littleEndian(value, at, 2)));
    return version;
}

// The names and texts of all languages.
std::vector<std::pair<std::string, std::string>> textsOf(std::string_view blocks) {
    std::vector<std::pair<std::string, std::string>> texts;
    for (Block info; takeBlock(blocks, info);) {
        if (info.key != "StringFileInfo") continue;
        for (Block language; takeBlock(info.children, language);) {
            for (Block text; takeBlock(language.children, text);)
                texts.emplace_back(text.key, utf8FromUtf16(utf16Units(text.value)));
        }
    }
    return texts;
}

}  // namespace

ProductFacts readWindowsProgram(const RandomAccessFile& file, std::string& damage) {
    bool damaged = false;
    const std::optional<WindowsProgram> program = WindowsProgram::read(file, damaged);
    if (!program && !damaged) return {};
    const std::optional<std::string> resource = program ? versionResource(file, *program) : std::nullopt;
    if (!resource) damage = "the headers or resources are damaged";

    Block version;
    std::string_view rest = resource ? std::string_view(*resource) : std::string_view();
    if (!takeBlock(rest, version) || version.key != "VS_VERSION_INFO") return {};
    const auto texts = textsOf(version.children);
    const auto first = [&texts](std::string_view name) {
        const auto found = std::ranges::find_if(
            texts, [name](const auto& text) { return text.first == name && !text.second.empty(); });
        return found == texts.end() ? std::string() : found->second;
    };
    ProductFacts facts{first("ProductName"), first("FileVersion"), first("CompanyName")};
    if (facts.version.empty()) facts.version = first("ProductVersion");
    if (facts.version.empty()) facts.version = fixedVersion(version.value);
    return facts;
}

}  // namespace toolkit::quorvis
