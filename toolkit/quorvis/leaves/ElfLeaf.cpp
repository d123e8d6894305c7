#include <algorithm>
#include <unordered_set>

#include "kest/Ascii.h"
#include "toolkit/quorvis/formats/ElfFile.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

// The item for the file. None when the file does not pass the tests.
std::optional<Item> describe(const Query& query, const ElfFile& elf, const std::string& path,
                             LeafResult& result) {
    if (!isOrAny(query, Attribute::Machine, elf.machine())) return std::nullopt;
    ElfFile::Dynamic dynamic;
    const bool asked = query.has(Attribute::Soname) || query.has(Attribute::Needed);
    if (!elf.readDynamic(dynamic) && asked) {
        result.fail(EventCode::Parse, path, "the dynamic section is damaged");
        return std::nullopt;
    }
    if (!isOrAny(query, Attribute::Soname, dynamic.soname)) return std::nullopt;
    if (query.has(Attribute::Needed) &&
        std::ranges::find(dynamic.needed, query.get(Attribute::Needed)) == dynamic.needed.end())
        return std::nullopt;
    const std::string buildId = elf.buildId();
    if (query.has(Attribute::BuildId) && !kest::equalsIgnoringCase(buildId, query.get(Attribute::BuildId)))
        return std::nullopt;

    Item item;
    item.source = path;
    item.set("path", path);
    if (!elf.machine().empty()) item.set("machine", std::string(elf.machine()));
    if (!dynamic.soname.empty()) item.set("soname", dynamic.soname);
    if (!buildId.empty()) item.set("buildId", buildId);
    return item;
}

// Items with different values have different keys.
std::string keyOf(const Item& item) {
    std::string key;
    for (const Field& field : item.fields) {
        key += field.name;
        key += '=' + std::to_string(field.value.size()) + ':';
        key += field.value;
    }
    return key;
}

// Adds an item for each match with new captures.
void addMatches(const Query& query, std::string_view content, const Item& described,
                EvaluationContext& context, LeafResult& result) {
    const RE2* const regex = regexOf(query, result);
    if (regex == nullptr) return;
    std::unordered_set<std::string> known;
    for (RegexMatches matches(*regex, content, lastCapture(query)); matches.next();) {
        if (!roomForMatch(context, described.source, result)) return;
        Item item = described;
        addCaptures(query, matches, item);
        if (known.insert(keyOf(item)).second) keepItem(context.budget(), result, std::move(item));
        if (!hasGroups(query)) return;
    }
}

void searchSection(const Query& query, const ElfFile& elf, const Item& described, EvaluationContext& context,
                   LeafResult& result) {
    const std::string name(query.has(Attribute::Section) ? query.get(Attribute::Section) : ".rodata");
    const std::uint64_t limit = context.settings().fileSystem.maxContentSize;
    std::string content;
    switch (elf.readSection(name, limit, content)) {
        case ElfFile::Section::Found:
            addMatches(query, content, described, context, result);
            break;
        case ElfFile::Section::Missing:
            break;
        case ElfFile::Section::TooLarge:
            result.fail(EventCode::LimitBytes, described.source,
                        "the section " + name + " is larger than " + std::to_string(limit) + " bytes");
            break;
        case ElfFile::Section::Damaged:
            result.fail(EventCode::Parse, described.source, "the sections are damaged");
            break;
    }
}

}  // namespace

LeafResult lookUpElf(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    const std::optional<RandomAccessFile> file = openFile(path, context, result);
    if (!file) return result;
    bool damaged = false;
    const std::optional<ElfFile> elf = ElfFile::open(*file, damaged);
    if (damaged) result.fail(EventCode::Parse, path, "the ELF header is damaged");
    if (!elf) return result;
    std::optional<Item> described = describe(query, *elf, path, result);
    if (!described) return result;
    if (query.has(Attribute::Regex) || query.has(Attribute::Section)) {
        searchSection(query, *elf, *described, context, result);
    } else {
        keepItem(context.budget(), result, std::move(*described));
    }
    return result;
}

}  // namespace toolkit::quorvis
