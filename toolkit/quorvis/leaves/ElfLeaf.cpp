#include <algorithm>
#include <unordered_set>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/ElfFile.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/PieceSearch.h"
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

// Searches the sections that a query names.
class SectionSearch {
  public:
    SectionSearch(const Query& query, const RandomAccessFile& file, const ElfFile& elf, const Item& described,
                  EvaluationContext& context, LeafResult& result)
        : query_(query),
          file_(file),
          elf_(elf),
          described_(described),
          context_(context),
          result_(result),
          regex_(regexOf(query, result)) {}

    void search() {
        if (regex_ == nullptr) return;
        std::string_view names = query_.has(Attribute::Section) ? query_.get(Attribute::Section) : ".rodata";
        for (std::string_view name = nextWord(names); !name.empty() && !done_; name = nextWord(names))
            searchSection(std::string(name));
    }

  private:
    void searchSection(const std::string& name) {
        ElfFile::Place place;
        const ElfFile::Section section = elf_.findSection(name, place);
        if (section == ElfFile::Section::Damaged)
            result_.fail(EventCode::Parse, described_.source, "the sections are damaged");
        if (section != ElfFile::Section::Found) return;
        const Settings::FileSystem& limits = context_.settings().fileSystem;
        const std::uint64_t limit = std::max(limits.maxContentSize, limits.maxHashedSize);
        if (place.size > limit) {
            result_.fail(EventCode::LimitBytes, described_.source,
                         "the section " + name + " is larger than " + std::to_string(limit) + " bytes");
            return;
        }
        if (place.size == 0) return addEmpty();
        const PieceRange range{place.offset, place.size, kLongestMatch};
        const auto take = [this](const RegexMatches& match, std::uint64_t) { return add(match); };
        if (!searchPieces(file_, range, *regex_, lastCapture(query_), take))
            result_.fail(EventCode::Parse, described_.source, "the sections are damaged");
    }

    void addEmpty() {
        RegexMatches match(*regex_, {}, lastCapture(query_));
        if (match.next()) add(match);
    }

    // Adds an item for a match with new captures. False when no other is wanted.
    bool add(const RegexMatches& match) {
        done_ = !roomForMatch(context_, described_.source, result_);
        if (done_) return false;
        Item item = described_;
        addCaptures(query_, match, item);
        if (known_.insert(keyOf(item)).second) keepItem(context_.budget(), result_, std::move(item));
        done_ = !hasGroups(query_);
        return !done_;
    }

    const Query& query_;
    const RandomAccessFile& file_;
    const ElfFile& elf_;
    const Item& described_;
    EvaluationContext& context_;
    LeafResult& result_;
    const RE2* regex_;
    std::unordered_set<std::string> known_;
    bool done_ = false;
};

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
        SectionSearch(query, *file, *elf, *described, context, result).search();
    } else {
        keepItem(context.budget(), result, std::move(*described));
    }
    return result;
}

}  // namespace toolkit::quorvis
