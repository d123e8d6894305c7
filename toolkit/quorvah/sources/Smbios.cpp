#include "toolkit/quorvah/sources/Smbios.h"

#include <algorithm>
#include <optional>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/quorvah/report/NaturalOrder.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kHeaderLength = 4;
constexpr unsigned kEndOfTable = 127;
constexpr std::size_t kMaxTableSize = std::size_t{4} << 20;  // bytes; real tables have a few thousand

// The version in a 32-bit or 64-bit entry point.
std::string versionOf(std::string_view entryPoint) {
    std::size_t at = 0;
    if (entryPoint.starts_with("_SM3_")) {
        at = 7;
    } else if (entryPoint.starts_with("_SM_")) {
        at = 6;
    } else {
        return {};
    }
    if (entryPoint.size() < at + 2) return {};
    return std::to_string(static_cast<unsigned char>(entryPoint[at])) + "." +
           std::to_string(static_cast<unsigned char>(entryPoint[at + 1]));
}

// Assembles the table from the single structures that the kernel also exports.
std::string tableFromEntries(const Root& root) {
    const std::string entries = "/sys/firmware/dmi/entries/";
    std::vector<std::string> names = root.list(entries);
    std::ranges::sort(names, naturallyBefore);
    std::string table;
    for (const std::string& name : names) {
        table += root.read(entries + name + "/raw", kMaxTableSize).value_or("");
        if (table.size() > kMaxTableSize) break;
    }
    return table;
}

// Removes the strings that follow a structure. Each ends with a zero byte, the last one with two.
std::optional<std::vector<std::string_view>> takeStrings(std::string_view& rest) {
    std::vector<std::string_view> strings;
    while (!rest.empty() && rest.front() != '\0') {
        const std::size_t end = rest.find('\0');
        if (end == std::string_view::npos) return std::nullopt;
        strings.push_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    if (rest.empty()) return std::nullopt;
    const std::size_t zeros = strings.empty() ? 2 : 1;
    rest.remove_prefix(std::min(zeros, rest.size()));
    return strings;
}

}  // namespace

bool SmbiosStructure::has(std::size_t offset, std::size_t width) const {
    return offset <= formatted.size() && width <= formatted.size() - offset;
}

std::uint64_t SmbiosStructure::number(std::size_t offset, std::size_t width) const {
    return has(offset, width) ? littleEndian(formatted, offset, width) : 0;
}

std::string_view SmbiosStructure::string(std::size_t offset) const {
    const unsigned number = byte(offset);
    return number >= 1 && number <= strings.size() ? strings[number - 1] : std::string_view();
}

Smbios::Smbios(const Root& root) {
    const std::string tables = "/sys/firmware/dmi/tables/";
    table_ = root.read(tables + "DMI", kMaxTableSize).value_or("");
    version_ = versionOf(root.read(tables + "smbios_entry_point").value_or(""));
    if (table_.empty()) table_ = tableFromEntries(root);
    parse();
}

Smbios::Smbios(std::string table) : table_(std::move(table)) {
    parse();
}

void Smbios::parse() {
    std::string_view rest = table_;
    while (rest.size() >= kHeaderLength) {
        SmbiosStructure structure;
        const auto length = static_cast<unsigned char>(rest[1]);
        if (length < kHeaderLength || length > rest.size()) {
            // Zeros fill up the memory behind the last structure.
            damaged_ = rest.find_first_not_of('\0') != std::string_view::npos;
            return;
        }
        structure.formatted = rest.substr(0, length);
        structure.type = structure.byte(0);
        structure.handle = structure.word(2);
        rest.remove_prefix(length);
        auto strings = takeStrings(rest);
        damaged_ = !strings;
        if (damaged_) return;
        structure.strings = std::move(*strings);
        structures_.push_back(std::move(structure));
        if (structures_.back().type == kEndOfTable) return;
    }
}

std::vector<const SmbiosStructure*> Smbios::ofType(unsigned type) const {
    std::vector<const SmbiosStructure*> found;
    for (const SmbiosStructure& structure : structures_) {
        if (structure.type == type) found.push_back(&structure);
    }
    return found;
}

}  // namespace toolkit::quorvah
