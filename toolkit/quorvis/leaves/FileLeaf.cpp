#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvis/leaves/FileFilter.h"

namespace toolkit::quorvis {

namespace {

// A file that passes all tests.
struct Found {
    std::string path;
    FileFacts facts;
    std::string sha256;  // when it is asked for
};

class FileSearch {
  public:
    FileSearch(const Query& query, EvaluationContext& context)
        : context_(context), tests_(query, context, result_) {}

    LeafResult& result() { return result_; }
    bool valid() const { return tests_.valid(); }

    // Paths come in the order of their bytes.
    void examine(const std::string& path) {
        context_.budget().checkTimeOccasionally();
        Files& files = context_.files();
        Files::Facts facts = tests_.ofLinks() ? files.lookAtLink(path) : files.look(path);
        if (facts.access == Access::Failed) return fail(std::move(facts.event));
        if (facts.access == Access::Missing || !tests_.pass(facts.facts)) return;
        Found found{path, facts.facts, {}};
        if (tests_.sha256().empty() || passesSum(found)) found_.push_back(std::move(found));
    }

    LeafResult take() {
        for (const std::size_t index : withoutTwins())
            keepItem(context_.budget(), result_, itemOf(found_[index]));
        return std::move(result_);
    }

  private:
    void fail(std::optional<Event> event) {
        result_.incomplete = true;
        if (event) result_.events.push_back(std::move(*event));
    }

    bool passesSum(Found& found) {
        Files::Content sum = context_.files().sha256(found.path);
        if (sum.access == Access::Failed) fail(std::move(sum.event));
        if (sum.access != Access::Ok || *sum.bytes != tests_.sha256()) return false;
        found.sha256 = *sum.bytes;
        return true;
    }

    // Of the paths that lead to one file, the first one without links, else the first one.
    std::vector<std::size_t> withoutTwins() {
        std::map<std::pair<std::uint64_t, std::uint64_t>, std::vector<std::size_t>> files;
        for (std::size_t i = 0; i < found_.size(); ++i)
            files[{found_[i].facts.device, found_[i].facts.inode}].push_back(i);
        std::vector<std::size_t> chosen;
        chosen.reserve(files.size());
        for (const auto& [identity, paths] : files) chosen.push_back(plainestOf(paths));
        std::ranges::sort(chosen);
        return chosen;
    }

    std::size_t plainestOf(const std::vector<std::size_t>& paths) {
        if (paths.size() == 1) return paths.front();
        const auto plain = std::ranges::find_if(paths, [this](std::size_t index) {
            return context_.files().withoutLinks(found_[index].path) == found_[index].path;
        });
        return plain == paths.end() ? paths.front() : *plain;
    }

    Item itemOf(const Found& found) {
        Item item;
        item.source = found.path;
        const std::size_t slash = found.path.rfind('/');
        item.set("path", found.path);
        item.set("name", found.path.substr(slash + 1));
        item.set("dir", slash == 0 ? "/" : found.path.substr(0, slash));
        item.set("size", std::to_string(found.facts.size));
        item.set("mtime", isoTime(found.facts.modified));
        if (!found.sha256.empty()) item.set("sha256", found.sha256);
        std::string target = context_.files().linkText(found.path);
        if (!target.empty()) item.set("target", std::move(target));
        return item;
    }

    EvaluationContext& context_;
    LeafResult result_;
    FileFilter tests_;
    std::vector<Found> found_;
};

// 0 when it is no number of levels.
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
                    "maxDepth is no number of levels: " + std::string(query.get(Attribute::MaxDepth)));
        return search.take();
    }
    if (!search.valid()) return search.take();
    const GlobHits& hits = context.tree().hits(request);
    result.incomplete = result.incomplete || hits.incomplete;
    result.events.insert(result.events.end(), hits.events.begin(), hits.events.end());
    for (const std::string& path : hits.paths) search.examine(path);
    return search.take();
}

}  // namespace toolkit::quorvis
