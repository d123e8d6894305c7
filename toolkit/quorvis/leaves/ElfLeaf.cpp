#include <algorithm>
#include <unordered_set>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/ElfFile.h"
#include "toolkit/quorvis/formats/PackageNote.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/PieceSearch.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

// The section with the symbol versions that a library defines. Instead of its bytes, the names of the versions are searched.
constexpr std::string_view kVersions = ".gnu.version_d";

// A damaged note costs its values only.
void addPackageNote(const std::string& text, Item& item, LeafResult& result) {
    bool whole = true;
    for (auto& [name, value] : readPackageNote(text, whole)) item.set(name, value.substr(0, kMaxValueSize));
    if (!whole)
        result.events.push_back(
            {EventCode::Parse, item.source, "the note about the package is damaged", {}, {}});
}

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
    const ElfFile::Notes notes = elf.notes();
    if (query.has(Attribute::BuildId) &&
        !kest::equalsIgnoringCase(notes.buildId, query.get(Attribute::BuildId)))
        return std::nullopt;

    Item item;
    item.source = path;
    item.set("path", path);
    if (!elf.machine().empty()) item.set("machine", std::string(elf.machine()));
    if (!dynamic.soname.empty()) item.set("soname", dynamic.soname);
    if (!notes.buildId.empty()) item.set("buildId", notes.buildId);
    addPackageNote(notes.package, item, result);
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
            searchNamed(name);
    }

  private:
    void searchNamed(std::string_view name) {
        if (name == kVersions) return searchVersions();
        searchSection(std::string(name));
    }

    // From the last one on, which is usually the newest.
    void searchVersions() {
        std::vector<std::string> names;
        if (!elf_.readVersions(names))
            result_.fail(EventCode::Parse, described_.source, "the symbol versions are damaged");
        for (auto name = names.rbegin(); name != names.rend() && !done_; ++name) {
            context_.budget().checkTimeOccasionally();
            RegexMatches match(*regex_, *name, lastCapture(query_));
            if (match.next()) add(match);
        }
    }

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
