#include "toolkit/quorvis/walk/DirectoryWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <limits>
#include <system_error>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kBufferSize = std::size_t{128} << 10;
constexpr std::size_t kMaxPendingBytes = std::size_t{48} << 20;
constexpr std::uint64_t kDirectoriesPerTimeCheck = 64;

// What getdents64 puts before each name.
struct DirectoryEntry {
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t length;
    unsigned char type;
};
constexpr std::size_t kNameOffset = 19;

constexpr const char* kNoSearchText = "No permission to search this directory";
constexpr const char* kRemoteText = "A file system of another machine or of a program was not looked at";

DirectoryEntry headAt(const char* place) {
    DirectoryEntry head;
    std::memcpy(&head, place, kNameOffset);
    return head;
}

bool isDots(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// The number of names without "." and "..". `last` becomes whether no more names follow: many file systems say so by giving
// the largest possible offset for the next entry.
std::uint64_t countNames(std::span<const char> read, bool& last) {
    std::uint64_t count = 0;
    for (std::size_t at = 0; at < read.size();) {
        if (!isDots(read.data() + at + kNameOffset)) ++count;
        const DirectoryEntry head = headAt(read.data() + at);
        last = head.offset == std::numeric_limits<std::int64_t>::max();
        at += head.length;
    }
    return count;
}

}  // namespace

DirectoryWalk::DirectoryWalk(WalkState& state, WalkFindings& findings)
    : state_(state),
      trie_(state.trie()),
      findings_(findings),
      reached_(trie_),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

void DirectoryWalk::begin() {
    pending_.active = trie_.start();
    const Active active{0, pending_.active.size()};
    DirectoryOpener::Result top = state_.opener().openTop(needsListing(active));
    if (top.directory.isOpen())
        visit(std::move(top), active, 0, 1);
    else if (top.problem)
        report(active, *top.problem, top.text, false);
}

void DirectoryWalk::takeOver(WorkItem item) {
    path_ = std::move(item.path);
    chain_.start(std::move(item.above));
    chain_.push(std::move(item.parent), item.behindLink);
    pending_ = std::move(item.pending);
    levels_.push_back({path_.size(), item.level, 0, pending_.directories.size(), 0, 0, 0});
}

bool DirectoryWalk::step() {
    while (!levels_.empty() && (levels_.back().next == levels_.back().end || state_.stopped())) leave();
    if (levels_.empty()) {
        showProgress();
        return false;
    }
    if (state_.queue().hungry()) giveWork();
    Level& level = levels_.back();
    if (level.next == level.end) return true;
    path_.resize(level.pathLength);
    enter(pending_.directories[level.next++], level.number + 1);
    return true;
}

void DirectoryWalk::leave() {
    const Level& level = levels_.back();
    pending_.directories.resize(level.directories);
    pending_.names.resize(level.names);
    pending_.active.resize(level.active);
    levels_.pop_back();
    chain_.pop();
}

// Gives away half of the pending directories that are nearest to the top: most is below them.
void DirectoryWalk::giveWork() {
    const auto hasPending = [](const Level& level) { return level.next != level.end; };
    const auto top = std::ranges::find_if(levels_, hasPending);
    const std::size_t count = top->end - top->next;
    const std::size_t given = &*top == &levels_.back() ? count / 2 : (count + 1) / 2;
    if (given == 0) return;
    WorkItem item = workFrom(static_cast<std::size_t>(top - levels_.begin()), top->end - given);
    if (!item.parent.isOpen()) return;
    top->end -= given;
    state_.queue().put(std::move(item));
}

// The pending directories of this level, starting with `first`.
WorkItem DirectoryWalk::workFrom(std::size_t level, std::size_t first) {
    const Level& from = levels_[level];
    const std::span given = std::span(pending_.directories).subspan(first, from.end - first);
    const std::size_t name = given.front().name;
    const std::size_t node = given.front().active.begin;
    const std::size_t namesEnd = given.back().name + std::strlen(&pending_.names[given.back().name]) + 1;
    const std::size_t nodesEnd = given.back().active.begin + given.back().active.count;

    WorkItem item;
    item.parent = kest::Descriptor(::fcntl(chain_.at(level), F_DUPFD_CLOEXEC, 0));
    item.above = chain_.above(level);
    item.behindLink = chain_.behindLinkAt(level);
    item.path = path_.substr(0, from.pathLength);
    item.level = from.number;
    item.pending.names.assign(&pending_.names[name], pending_.names.data() + namesEnd);
    item.pending.active.assign(pending_.active.data() + node, pending_.active.data() + nodesEnd);
    for (const Subdirectory& one : given)
        item.pending.directories.push_back(
            {one.name - name, {one.active.begin - node, one.active.count}, one.link, one.share});
    return item;
}

bool DirectoryWalk::needsListing(const Active& active) const {
    return std::ranges::any_of(nodes(active), [this](NodeId id) { return trie_.node(id).lists; });
}

void DirectoryWalk::report(const Active& active, EventCode code, const std::string& text, bool listingOnly) {
    std::vector<NodeId> concerned;
    std::ranges::copy_if(nodes(active), std::back_inserter(concerned),
                         [&](NodeId id) { return !listingOnly || trie_.node(id).lists; });
    report(concerned, code, path_, text);
}

void DirectoryWalk::report(std::span<const NodeId> nodes, EventCode code, const std::string& path,
                           const std::string& text) {
    const std::string place = path.empty() ? "/" : path;
    for (const NodeId id : nodes) findings_.addProblem(id, code, place, text);
    if (!nodes.empty() && isOfPrivatePlace({code, {}, {}, {}, {}}))
        findings_.addPrivatePlace(code, place, text);
}

// Whether the user may look up names in the current directory.
bool DirectoryWalk::maySearchHere() const {
    struct stat status {};
    return ::fstatat(chain_.last().number(), ".", &status, 0) == 0 || errno != EACCES;
}

// `level` is that of the directory. Its entries are one level deeper.
void DirectoryWalk::visit(DirectoryOpener::Result opened, const Active& active, std::uint32_t level,
                          float share) {
    if (entered_++ % kDirectoriesPerTimeCheck == 0) {
        state_.checkTime();
        showProgress();
    }
    if (state_.stopped()) return;
    const std::optional<EventCode> problem = opened.problem;
    chain_.push(std::move(opened.directory), opened.behindLink);
    const bool closed = problem == EventCode::Permission && !maySearchHere();
    if (problem) report(active, *problem, closed ? kNoSearchText : opened.text, !closed);
    const std::size_t first = pending_.directories.size();
    levels_.push_back(
        {path_.size(), level, first, first, first, pending_.names.size(), pending_.active.size()});
    if (!problem && needsListing(active))
        readNames(active, level + 1);
    else if (!closed)
        stepToLiterals(active, level + 1);
    levels_.back().end = pending_.directories.size();
    shareOut(share, first);
}

// Divides the share of a directory among itself, which is done, and its subdirectories: those from `first` on.
void DirectoryWalk::shareOut(float share, std::size_t first) {
    const std::span subdirectories = std::span(pending_.directories).subspan(first);
    const float each = share / static_cast<float>(subdirectories.size() + 1);
    for (Subdirectory& subdirectory : subdirectories) subdirectory.share = each;
    share_ += each;
}

void DirectoryWalk::showProgress() {
    state_.addProgress(std::exchange(names_, 0), std::exchange(share_, 0));
}

void DirectoryWalk::readNames(const Active& active, std::uint32_t level) {
    for (std::uint64_t count = 0;;) {
        const long size = ::syscall(SYS_getdents64, chain_.last().number(), buffer_.get(), kBufferSize);
        if (size < 0)
            report(active, EventCode::Io, "Cannot be listed: " + std::generic_category().message(errno),
                   true);
        if (size <= 0) return;
        if (!takeNames({buffer_.get(), static_cast<std::size_t>(size)}, active, level, count)) return;
    }
}

// False when no more names need to be read. `count` is the number of names of the directory so far.
bool DirectoryWalk::takeNames(std::span<const char> read, const Active& active, std::uint32_t level,
                              std::uint64_t& count) {
    const std::uint64_t left = state_.maxNamesPerDirectory() - count;
    bool last = false;
    const std::uint64_t wanted = countNames(read, last);
    // One name more than allowed shows that there are too many.
    const std::uint64_t claimed = state_.claimNames(wanted > left ? left + 1 : wanted);
    const std::uint64_t allowed = std::min(claimed, left);
    std::uint64_t taken = 0;
    for (std::size_t at = 0; at < read.size() && taken < allowed;) {
        const char* const start = read.data() + at;
        const DirectoryEntry head = headAt(start);
        at += head.length;
        if (isDots(start + kNameOffset)) continue;
        take(active, {start + kNameOffset, std::strlen(start + kNameOffset), head.type}, level);
        ++taken;
    }
    count += taken;
    names_ += taken;
    if (claimed > left)
        report(active, EventCode::LimitEntries,
               "More than " + std::to_string(state_.maxNamesPerDirectory()) + " names in one directory",
               true);
    return taken == wanted && !last;
}

unsigned char DirectoryWalk::typeOf(const Entry& entry) const {
    struct stat status {};
    if (entry.type != DT_UNKNOWN) return entry.type;
    if (::fstatat(chain_.last().number(), entry.name, &status, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
    return static_cast<unsigned char>(IFTODT(status.st_mode));
}

void DirectoryWalk::take(const Active& active, const Entry& entry, std::uint32_t level) {
    const unsigned char type = typeOf(entry);
    const std::string_view name(entry.name, entry.length);
    trie_.advance(nodes(active), name, type == DT_DIR, reached_);
    if (reached_.nodes().empty()) return;
    hitReached({entry.name, entry.length, type});
    if (type == DT_DIR || type == DT_LNK) keepInner({entry.name, entry.length, type}, level, type == DT_LNK);
}

// Looks at the file while its directory is open, which spares another lookup of its path.
WalkedFile DirectoryWalk::lookAt(const Entry& entry, const std::string& path) const {
    WalkedFile file;
    struct stat status {};
    const bool mayKnow = entry.type == DT_REG || entry.type == DT_DIR;
    if (!mayKnow || chain_.behindLink() || state_.opener().isMountPoint(path) ||
        ::fstatat(chain_.last().number(), entry.name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0 ||
        (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)))
        return file;
    file.known = true;
    file.mode = status.st_mode;
    file.owner = status.st_uid;
    file.size = static_cast<std::uint64_t>(status.st_size);
    file.modified = status.st_mtim.tv_sec;
    file.device = status.st_dev;
    file.inode = status.st_ino;
    return file;
}

void DirectoryWalk::hitReached(const Entry& entry) {
    const std::string_view name(entry.name, entry.length);
    std::string path;
    WalkedFile file;
    findings_.nextName();
    for (const NodeId id : reached_.nodes()) {
        if (!trie_.node(id).ends()) continue;
        if (path.empty()) path.append(path_).append(1, '/').append(name);
        if (state_.excludes(id, path)) continue;
        if (state_.opener().isRemote(chain_, path)) {
            findings_.addProblem(id, EventCode::RemoteSkipped, path, kRemoteText);
            continue;
        }
        if (!file.known) file = lookAt(entry, path);
        findings_.addHit(id, path, file);
    }
}

// Reports that the walk does not go deeper, unless the request itself limits the depth.
void DirectoryWalk::reportDepth(NodeId node, const char* name) {
    const GlobScope& scope = trie_.scope(trie_.node(node).scope);
    if (scope.depthIsAsked) return;
    findings_.addProblem(node, EventCode::LimitDepth, path_ + '/' + name,
                         "Deeper than " + std::to_string(scope.maxDepth) + " levels");
}

// Adds a directory of this level to the pending ones, with those of the reached nodes that have children.
void DirectoryWalk::keepInner(const Entry& entry, std::uint32_t level, bool link) {
    Active inner{pending_.active.size(), 0};
    for (const NodeId id : reached_.nodes()) {
        const GlobTrie::Node& node = trie_.node(id);
        if (!node.inner()) continue;
        if (level < node.bound)
            pending_.active.push_back(id);
        else if (typeOf(entry) == DT_DIR)
            reportDepth(id, entry.name);
    }
    inner.count = pending_.active.size() - inner.begin;
    if (inner.count == 0) return;
    if (pending_.sizeInBytes() > kMaxPendingBytes) {
        report(inner, EventCode::LimitEntries, "More directories than a walk may keep in mind", false);
        pending_.active.resize(inner.begin);
        return;
    }
    pending_.directories.push_back({pending_.names.size(), inner, link, 0});
    pending_.names.insert(pending_.names.end(), entry.name, entry.name + entry.length + 1);
}

// For directories in which all wanted names are known. They are opened without listing the directory.
void DirectoryWalk::stepToLiterals(const Active& active, std::uint32_t level) {
    std::vector<NodeId> children = trie_.literalChildren(nodes(active));
    const auto before = [this](NodeId left, NodeId right) {
        return trie_.nameOf(left) < trie_.nameOf(right);
    };
    std::ranges::sort(children, before);
    for (std::size_t begin = 0; begin < children.size() && !state_.stopped();) {
        std::size_t end = begin + 1;
        while (end < children.size() && !before(children[begin], children[end])) ++end;
        stepToLiteral({children.data() + begin, end - begin}, level);
        begin = end;
    }
}

void DirectoryWalk::stepToLiteral(std::span<const NodeId> children, std::uint32_t level) {
    const std::string& name = trie_.nameOf(children.front());
    if (state_.claimNames(1) == 0) return;
    reached_.clear();
    for (const NodeId child : children) trie_.reach(child, reached_);
    if (!state_.opener().maySearch(chain_, path_ + '/' + name)) {
        report(children, EventCode::Denied, path_ + '/' + name, "Other users may not look there");
        return;
    }
    const auto ends = [this](NodeId id) { return trie_.node(id).ends(); };
    const auto ending = std::ranges::find_if(children, ends);
    const bool mayAsk = ending != children.end() && !state_.opener().isRemote(chain_, path_ + '/' + name);
    if (ending != children.end() && (!mayAsk || exists(name.c_str(), children)))
        hitReached({name.c_str(), name.size(), DT_UNKNOWN});
    keepInner({name.c_str(), name.size(), DT_UNKNOWN}, level, false);
}

bool DirectoryWalk::exists(const char* name, std::span<const NodeId> nodes) {
    struct stat status {};
    if (::fstatat(chain_.last().number(), name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0)
        return true;
    const int error = errno;
    if (error == EACCES && !maySearchHere())
        report(nodes, EventCode::Permission, path_, kNoSearchText);
    else if (error == EACCES || error == EPERM)
        report(nodes, EventCode::Permission, path_ + '/' + name, "No permission to look at this");
    else if (error != ENOENT && error != ENOTDIR && error != ENAMETOOLONG)
        report(nodes, EventCode::Io, path_ + '/' + name, std::generic_category().message(error));
    return false;
}

// Removes the nodes whose requests exclude the current path.
DirectoryWalk::Active DirectoryWalk::withoutExcluded(const Active& active) {
    if (!state_.anyExclude()) return active;
    const auto begin = pending_.active.begin() + static_cast<std::ptrdiff_t>(active.begin);
    const auto end = begin + static_cast<std::ptrdiff_t>(active.count);
    const auto kept = std::remove_if(begin, end, [this](NodeId id) { return state_.excludes(id, path_); });
    return {active.begin, static_cast<std::size_t>(kept - begin)};
}

void DirectoryWalk::enter(const Subdirectory& next, std::uint32_t level) {
    const std::size_t nameBegin = path_.size() + 1;
    path_.append(1, '/').append(&pending_.names[next.name]);
    const Active active = withoutExcluded(next.active);
    if (active.count == 0) return;
    DirectoryOpener::Result opened =
        state_.opener().open(chain_, {path_.c_str() + nameBegin, path_, next.link, needsListing(active)});
    if (!opened.directory.isOpen()) {
        share_ += next.share;
        if (opened.problem == EventCode::Permission && !next.link && !maySearchHere())
            report(nodes(active), EventCode::Permission, path_.substr(0, nameBegin - 1), kNoSearchText);
        else if (opened.problem)
            report(active, *opened.problem, opened.text, false);
        return;
    }
    visit(std::move(opened), active, level, next.share);
}

}  // namespace toolkit::quorvis
