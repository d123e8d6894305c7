#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "kest/Ascii.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvis/facts/Accounts.h"
#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kNobody = std::numeric_limits<std::uint64_t>::max();

std::optional<std::uint64_t> parsed(std::string_view text, int base) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool isOrAny(const std::optional<std::uint64_t>& wanted, std::uint64_t value) {
    return !wanted || *wanted == value;
}

// The tests of a File or Glob query besides the path.
class FileFilter {
  public:
    // An invalid value becomes an event of the result; then valid() is false.
    FileFilter(const Query& query, EvaluationContext& context, LeafResult& result);

    bool valid() const { return valid_; }
    // Whether symbolic links themselves are tested, not their targets.
    bool testsLinks() const { return kind_ == FileFacts::Kind::Link; }

    bool passes(const FileFacts& facts) const;
    // The wanted checksum in lower-case digits; empty when any will do.
    const std::string& sha256() const { return sha256_; }

  private:
    void readKind(const Query& query, LeafResult& result);
    void readOwner(const Query& query, EvaluationContext& context, LeafResult& result);
    std::optional<std::uint64_t> number(const Query& query, Attribute attribute, int base,
                                        LeafResult& result);

    bool valid_ = true;
    std::optional<FileFacts::Kind> kind_;  // none for any kind
    std::optional<std::uint64_t> size_;
    std::optional<std::uint64_t> minSize_;
    std::optional<std::uint64_t> maxSize_;
    std::optional<std::uint64_t> mode_;
    std::optional<std::uint64_t> owner_;
    std::string sha256_;
};

FileFilter::FileFilter(const Query& query, EvaluationContext& context, LeafResult& result)
    : size_(number(query, Attribute::Size, 10, result)),
      minSize_(number(query, Attribute::MinSize, 10, result)),
      maxSize_(number(query, Attribute::MaxSize, 10, result)),
      mode_(number(query, Attribute::Mode, 8, result)),
      sha256_(kest::lowerCase(query.get(Attribute::Sha256))) {
    readKind(query, result);
    readOwner(query, context, result);
}

std::optional<std::uint64_t> FileFilter::number(const Query& query, Attribute attribute, int base,
                                                LeafResult& result) {
    if (!query.has(attribute)) return std::nullopt;
    const std::optional<std::uint64_t> value = parsed(query.get(attribute), base);
    if (!value) {
        valid_ = false;
        result.fail(
            EventCode::Unsupported, {},
            std::string(nameOf(attribute)) + " is not a number: " + std::string(query.get(attribute)));
    }
    return value;
}

void FileFilter::readKind(const Query& query, LeafResult& result) {
    const std::string_view kind = query.get(Attribute::Kind);
    if (kind.empty() || kind == "any") return;
    if (kind == "file")
        kind_ = FileFacts::Kind::File;
    else if (kind == "dir")
        kind_ = FileFacts::Kind::Directory;
    else if (kind == "link")
        kind_ = FileFacts::Kind::Link;
    else
        result.fail(EventCode::Unsupported, {}, "There is no kind of file called " + std::string(kind));
    valid_ = valid_ && kind_.has_value();
}

void FileFilter::readOwner(const Query& query, EvaluationContext& context, LeafResult& result) {
    if (!query.has(Attribute::Owner)) return;
    const std::string_view owner = query.get(Attribute::Owner);
    owner_ = parsed(owner, 10);
    if (owner_) return;
    const Files::Facts accounts = context.files().look("/etc/passwd");
    if (accounts.access == Access::Failed) {
        valid_ = false;
        result.fail(EventCode::Io, "/etc/passwd", "Cannot be told who " + std::string(owner) + " is");
        return;
    }
    const std::optional<std::uint32_t> number = userNumber(context.root(), owner);
    owner_ = number ? std::uint64_t{*number} : kNobody;
}

bool FileFilter::passes(const FileFacts& facts) const {
    if (kind_ && *kind_ != facts.kind) return false;
    if (minSize_ && facts.size < *minSize_) return false;
    if (maxSize_ && facts.size > *maxSize_) return false;
    return isOrAny(size_, facts.size) && isOrAny(mode_, facts.mode) && isOrAny(owner_, facts.owner);
}

FileFacts factsOf(const WalkedFile& file) {
    FileFacts facts;
    facts.kind = S_ISREG(file.mode) ? FileFacts::Kind::File : FileFacts::Kind::Directory;
    facts.size = file.size;
    facts.mode = file.mode & 07777U;
    facts.owner = file.owner;
    facts.modified = file.modified;
    facts.device = file.device;
    facts.inode = file.inode;
    return facts;
}

// A file that passes all tests.
struct Found {
    std::string path;
    FileFacts facts;
    bool linkFree = false;  // whether the path is known to have no links
    std::string sha256;     // empty unless the query has one
};

class FileSearch {
  public:
    FileSearch(const Query& query, EvaluationContext& context)
        : context_(context), filter_(query, context, result_) {}

    LeafResult& result() { return result_; }
    bool valid() const { return filter_.valid(); }

    // REQUIRES: paths come sorted by bytes.
    void examine(const std::string& path) {
        context_.budget().checkTimeOccasionally();
        Files& files = context_.files();
        Files::Facts facts = filter_.testsLinks() ? files.lookAtLink(path) : files.look(path);
        if (facts.access == Access::Failed) return fail(std::move(facts.event));
        if (facts.access == Access::Ok) consider({path, facts.facts, false, {}});
    }
    void examine(const std::string& path, const WalkedFile& file) {
        if (!file.known) return examine(path);
        context_.budget().checkTimeOccasionally();
        consider({path, factsOf(file), true, {}});
    }

    LeafResult take() {
        for (const std::size_t index : withoutTwins())
            keepItem(context_.budget(), result_, itemOf(found_[index]));
        return std::move(result_);
    }

  private:
    void consider(Found found) {
        if (!filter_.passes(found.facts)) return;
        if (found.linkFree && found.facts.kind == FileFacts::Kind::File)
            context_.files().expectRegular(found.path);
        if (filter_.sha256().empty() || passesSum(found)) found_.push_back(std::move(found));
    }

    void fail(std::optional<Event> event) {
        result_.incomplete = true;
        if (event) result_.events.push_back(std::move(*event));
    }

    bool passesSum(Found& found) {
        Files::Content sum = context_.files().sha256(found.path);
        if (sum.access == Access::Failed) fail(std::move(sum.event));
        if (sum.access != Access::Ok || *sum.bytes != filter_.sha256()) return false;
        found.sha256 = *sum.bytes;
        return true;
    }

    // Of several paths that lead to one file, keeps the first one without links, else the first one.
    std::vector<std::size_t> withoutTwins() {
        const auto identityOf = [this](std::size_t index) {
            return std::pair(found_[index].facts.device, found_[index].facts.inode);
        };
        std::vector<std::size_t> order(found_.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::ranges::stable_sort(order, {}, identityOf);
        std::vector<std::size_t> chosen;
        for (auto begin = order.begin(); begin != order.end();) {
            const auto isOther = [&](std::size_t index) { return identityOf(index) != identityOf(*begin); };
            const auto end = std::find_if(begin, order.end(), isOther);
            chosen.push_back(plainestOf({begin, end}));
            begin = end;
        }
        std::ranges::sort(chosen);
        return chosen;
    }

    std::size_t plainestOf(std::span<const std::size_t> paths) {
        if (paths.size() == 1) return paths.front();
        const auto plain = std::ranges::find_if(paths, [this](std::size_t index) {
            return found_[index].linkFree ||
                   context_.files().withoutLinks(found_[index].path) == found_[index].path;
        });
        return plain == paths.end() ? paths.front() : *plain;
    }

    Item itemOf(const Found& found) {
        Item item;
        item.source = found.path;
        item.linkFree = found.linkFree;
        const std::size_t slash = found.path.rfind('/');
        item.set("path", found.path);
        item.set("name", found.path.substr(slash + 1));
        item.set("dir", slash == 0 ? "/" : found.path.substr(0, slash));
        item.set("size", std::to_string(found.facts.size));
        item.set("mtime", isoTime(found.facts.modified));
        if (!found.sha256.empty()) item.set("sha256", found.sha256);
        if (!found.facts.atLink) return item;
        std::string target = context_.files().linkText(found.path);
        if (!target.empty()) item.set("target", std::move(target));
        return item;
    }

    EvaluationContext& context_;
    LeafResult result_;
    FileFilter filter_;
    std::vector<Found> found_;
};

// 0 when the text is not a valid number of levels.
unsigned depthOf(std::string_view text) {
    unsigned depth = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), depth);
    return error == std::errc() && end == text.data() + text.size() ? depth : 0;
}

}  // namespace

GlobRequest globRequestOf(const Query& query) {
    return {std::string(query.get(Attribute::Pattern)), depthOf(query.get(Attribute::MaxDepth)),
            std::string(query.get(Attribute::Exclude))};
}

LeafResult lookUpFile(const Query& query, EvaluationContext& context) {
    FileSearch search(query, context);
    if (search.valid()) search.examine(std::string(query.get(Attribute::Path)));
    return search.take();
}

LeafResult lookUpGlob(const Query& query, EvaluationContext& context) {
    FileSearch search(query, context);
    LeafResult& result = search.result();
    const GlobRequest request = globRequestOf(query);
    if (query.has(Attribute::MaxDepth) && request.maxDepth == 0) {
        result.fail(EventCode::Unsupported, {},
                    "maxDepth is not a number of levels: " + std::string(query.get(Attribute::MaxDepth)));
        return search.take();
    }
    if (!search.valid()) return search.take();
    const GlobHits& hits = context.tree().hits(request);
    result.incomplete = result.incomplete || hits.incomplete;
    result.events.insert(result.events.end(), hits.events.begin(), hits.events.end());
    for (std::size_t i = 0; i < hits.paths.size(); ++i) search.examine(hits.paths[i], hits.files[i]);
    return search.take();
}

}  // namespace toolkit::quorvis
