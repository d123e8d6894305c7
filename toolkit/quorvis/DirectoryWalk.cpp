#include "toolkit/quorvis/DirectoryWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "toolkit/quorvis/Machine.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kBufferSize = std::size_t{128} << 10;

// What getdents64 puts before each name.
struct DirectoryEntry {
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t length;
    unsigned char type;
};
constexpr std::size_t kNameOffset = 19;

constexpr const char* kRemote = "A file system of another machine or of a program was not looked at";

bool isDots(std::string_view name) {
    return name == "." || name == "..";
}

}  // namespace

DirectoryWalk::DirectoryWalk(Machine& machine, GlobTrie& trie, WalkFindings& findings)
    : machine_(machine),
      trie_(trie),
      findings_(findings),
      opener_(machine.root(), machine.settings()),
      excludes_(trie.scopeCount()),
      buffer_(kBufferSize) {
    for (std::uint32_t i = 0; i < excludes_.size(); ++i) {
        const std::string& exclude = trie.scope(i).exclude;
        if (exclude.empty()) continue;
        excludes_[i].emplace(exclude);
        anyExclude_ = true;
    }
}

void DirectoryWalk::run() {
    active_ = trie_.start();
    const Active active{0, active_.size()};
    const DirectoryOpener::Result top = opener_.openTop(toList(active));
    if (top.problem) report(active, *top.problem, top.text, false);
    if (!top.directory.isOpen()) return;
    parents_.push_back(top.directory.number());
    visit(active, 0, true);
    parents_.pop_back();
}

bool DirectoryWalk::toList(const Active& active) const {
    return std::ranges::any_of(nodes(active), [this](NodeId id) { return trie_.node(id).lists; });
}

void DirectoryWalk::report(const Active& active, EventCode code, const std::string& text, bool listing) {
    for (const NodeId id : nodes(active)) {
        if (!listing || trie_.node(id).lists) findings_.problem(id, code, path_.empty() ? "/" : path_, text);
    }
}

bool DirectoryWalk::countEntry() {
    const std::uint64_t limit = machine_.settings().fileSystem.maxEntries;
    if (machine_.entriesSeen() >= limit) {
        findings_.stop(EventCode::LimitEntries,
                       "More than " + std::to_string(limit) + " names in all directories");
        return false;
    }
    machine_.countEntry();
    return true;
}

// `level` is that of the directory; what it holds is one level deeper.
void DirectoryWalk::visit(const Active& active, std::uint32_t level, bool listable) {
    if (machine_.late())
        findings_.stop(EventCode::Deadline, "The time for all signatures was over during the walk");
    if (findings_.stopped()) return;
    if (listable && toList(active))
        list(active, level);
    else
        stepToLiterals(active, level);
}

void DirectoryWalk::list(const Active& active, std::uint32_t level) {
    const std::size_t firstSubdirectory = subdirectories_.size();
    const std::size_t namesBefore = names_.size();
    const std::size_t activeBefore = active_.size();
    if (readNames(active, level)) enterSubdirectories(firstSubdirectory, level);
    subdirectories_.resize(firstSubdirectory);
    names_.resize(namesBefore);
    active_.resize(activeBefore);
}

// False when the walk is to end.
bool DirectoryWalk::readNames(const Active& active, std::uint32_t level) {
    const std::uint64_t limit = machine_.settings().fileSystem.maxEntriesPerDirectory;
    for (std::uint64_t count = 0;;) {
        const long size = ::syscall(SYS_getdents64, parents_.back(), buffer_.data(), buffer_.size());
        if (size < 0)
            report(active, EventCode::Io, "Cannot be listed: " + std::generic_category().message(errno),
                   true);
        if (size <= 0) return true;
        for (long at = 0; at < size;) {
            const char* const start = buffer_.data() + at;
            DirectoryEntry head;
            std::memcpy(&head, start, kNameOffset);
            at += head.length;
            const Entry entry{start + kNameOffset, std::strlen(start + kNameOffset), head.type};
            if (isDots({entry.name, entry.length})) continue;
            if (!countEntry()) return false;
            if (++count > limit) {
                report(active, EventCode::LimitEntries,
                       "More than " + std::to_string(limit) + " names in one directory", true);
                return true;
            }
            take(active, entry, level + 1);
        }
    }
}

unsigned char DirectoryWalk::typeOf(const Entry& entry) const {
    struct stat status {};
    if (entry.type != DT_UNKNOWN) return entry.type;
    if (::fstatat(parents_.back(), entry.name, &status, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
    return static_cast<unsigned char>(IFTODT(status.st_mode));
}

void DirectoryWalk::take(const Active& active, const Entry& entry, std::uint32_t level) {
    const unsigned char type = typeOf(entry);
    trie_.advance(nodes(active), {entry.name, entry.length}, type == DT_DIR, reached_);
    if (reached_.empty()) return;
    const std::string_view name(entry.name, entry.length);
    hitReached(name);
    if (type != DT_DIR && type != DT_LNK) return;
    const Active inner = keepInner({entry.name, entry.length, type}, level);
    if (inner.count == 0) return;
    subdirectories_.push_back({names_.size(), inner, type == DT_LNK});
    names_.insert(names_.end(), entry.name, entry.name + entry.length + 1);
}

bool DirectoryWalk::passesOver(NodeId node, const std::string& path) const {
    const std::optional<PathPattern>& exclude = excludes_[trie_.node(node).scope];
    return exclude && exclude->matches(path);
}

void DirectoryWalk::hitReached(std::string_view name) {
    std::string path;
    findings_.nextName();
    for (const NodeId id : reached_) {
        if (!trie_.node(id).ends()) continue;
        if (path.empty()) path.append(path_).append(1, '/').append(name);
        if (passesOver(id, path)) continue;
        if (opener_.isRemote(path))
            findings_.problem(id, EventCode::RemoteSkipped, path, kRemote);
        else
            findings_.hit(id, path);
    }
}

// Who asks for a depth wants nothing from below it.
void DirectoryWalk::reportDepth(NodeId node, const char* name) {
    const GlobScope& scope = trie_.scope(trie_.node(node).scope);
    if (scope.depthIsAsked) return;
    findings_.problem(node, EventCode::LimitDepth, path_ + '/' + name,
                      "Deeper than " + std::to_string(scope.maxDepth) + " levels");
}

// Puts those of the reached nodes on the stack that have something below a directory at this level.
DirectoryWalk::Active DirectoryWalk::keepInner(const Entry& entry, std::uint32_t level) {
    Active inner{active_.size(), 0};
    for (const NodeId id : reached_) {
        const GlobTrie::Node& node = trie_.node(id);
        if (!node.inner()) continue;
        if (level < node.bound)
            active_.push_back(id);
        else if (typeOf(entry) == DT_DIR)
            reportDepth(id, entry.name);
    }
    inner.count = active_.size() - inner.begin;
    return inner;
}

void DirectoryWalk::enterSubdirectories(std::size_t first, std::uint32_t level) {
    for (std::size_t i = first; i < subdirectories_.size() && !findings_.stopped(); ++i) {
        const Subdirectory next = subdirectories_[i];
        // The stack of names may move below.
        const std::string name(names_.data() + next.name);
        enter(name.c_str(), next.active, level + 1, next.link);
    }
}

// The names that are looked for are known: they are opened without a look at the others.
void DirectoryWalk::stepToLiterals(const Active& active, std::uint32_t level) {
    std::vector<NodeId> children = trie_.literalChildren(nodes(active));
    const auto before = [this](NodeId left, NodeId right) {
        return trie_.nameOf(left) < trie_.nameOf(right);
    };
    std::ranges::sort(children, before);
    for (std::size_t begin = 0; begin < children.size() && !findings_.stopped();) {
        std::size_t end = begin + 1;
        while (end < children.size() && !before(children[begin], children[end])) ++end;
        stepToLiteral({children.data() + begin, end - begin}, level + 1);
        begin = end;
    }
}

void DirectoryWalk::stepToLiteral(std::span<const NodeId> children, std::uint32_t level) {
    const std::string& name = trie_.nameOf(children.front());
    if (!countEntry()) return;
    trie_.newSet();
    reached_.clear();
    for (const NodeId child : children) trie_.reach(child, reached_);
    const auto ends = [this](NodeId id) { return trie_.node(id).ends(); };
    const auto ending = std::ranges::find_if(children, ends);
    const bool mayAsk = ending != children.end() && !opener_.isRemote(path_ + '/' + name);
    if (ending != children.end() && (!mayAsk || isThere(name.c_str(), *ending))) hitReached(name);
    const std::size_t activeBefore = active_.size();
    const Active inner = keepInner({name.c_str(), name.size(), DT_UNKNOWN}, level);
    if (inner.count > 0) enter(name.c_str(), inner, level, false);
    active_.resize(activeBefore);
}

bool DirectoryWalk::isThere(const char* name, NodeId node) {
    struct stat status {};
    if (::fstatat(parents_.back(), name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0) return true;
    if (errno == EACCES || errno == EPERM)
        findings_.problem(node, EventCode::Permission, path_ + '/' + name, "No permission to look at this");
    else if (errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG)
        findings_.problem(node, EventCode::Io, path_ + '/' + name, std::generic_category().message(errno));
    return false;
}

// Takes those nodes out that pass over the current path.
DirectoryWalk::Active DirectoryWalk::withoutExcluded(const Active& active) {
    if (!anyExclude_) return active;
    const auto begin = active_.begin() + static_cast<std::ptrdiff_t>(active.begin);
    const auto end = begin + static_cast<std::ptrdiff_t>(active.count);
    const auto kept = std::remove_if(begin, end, [this](NodeId id) { return passesOver(id, path_); });
    return {active.begin, static_cast<std::size_t>(kept - begin)};
}

void DirectoryWalk::enter(const char* name, Active active, std::uint32_t level, bool link) {
    const std::size_t pathBefore = path_.size();
    path_.append(1, '/').append(name);
    active = withoutExcluded(active);
    if (active.count > 0) {
        const DirectoryOpener::Result opened = opener_.open(parents_, {name, path_, link, toList(active)});
        if (opened.problem) report(active, *opened.problem, opened.text, opened.directory.isOpen());
        if (opened.directory.isOpen()) {
            parents_.push_back(opened.directory.number());
            visit(active, level, !opened.problem);
            parents_.pop_back();
        }
    }
    path_.resize(pathBefore);
}

}  // namespace toolkit::quorvis
