#include "toolkit/quorvis/files/FileFinder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/machine/files/OpenResolved.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/files/Disclosure.h"

namespace toolkit::quorvis {

namespace {

constexpr int kMaxLinks = 40;  // the limit of the kernel
// Of the directories that stay open. Meanwhile they may be moved or closed to others.
constexpr std::size_t kMaxLevels = 16;
constexpr std::chrono::milliseconds kMaxAge{500};
constexpr int kToRead = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr std::uint64_t kPlainly = RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV;
using Problem = FoundFile::Problem;

// Calls `open` with flags for reading. The owner and root may read without changing the time of access.
template <typename Open>
kest::Descriptor openQuietly(const Open& open) {
    const int quietly = open(kToRead | O_NOATIME);
    return kest::Descriptor(quietly >= 0 || errno != EPERM ? quietly : open(kToRead));
}

// Opens the file of `handle` for reading, even if its path now leads to another file.
kest::Descriptor reopened(const kest::Descriptor& handle) {
    const std::string link = "/proc/self/fd/" + std::to_string(handle.number());
    return openQuietly([&link](int flags) { return ::open(link.c_str(), flags); });
}

// Whether the path is absolute and consists of names with single slashes.
bool isPlain(const std::string& path) {
    if (path.empty() || path.front() != '/') return false;
    for (std::string_view rest = std::string_view(path).substr(1);;) {
        const std::size_t end = rest.find('/');
        const std::string_view name = rest.substr(0, end);
        if (name.empty() || name == "." || name == "..") return false;
        if (end == std::string_view::npos) return true;
        rest.remove_prefix(end + 1);
    }
}

// Resolves one path.
class PathResolver {
  public:
    // `wantsHandle`: whether to open the file itself.
    PathResolver(const Disclosure& disclosure, int top, const struct stat& topStatus, bool wantsHandle)
        : disclosure_(disclosure), top_(top), topStatus_(topStatus), wantsHandle_(wantsHandle) {}

    FoundFile resolve(const std::string& path, bool follow, DirectoryTrail* trail) {
        std::string todo = start(path, trail);
        while (found_.problem == Problem::None && !todo.empty()) {
            std::string_view rest = todo;
            const std::string name(takeField(rest, '/'));
            const bool last = rest.empty() && !todo.ends_with('/');
            std::string next(rest);
            const int links = links_;
            if (!name.empty()) step(name, last, follow, next);
            fileIsLink_ = fileIsLink_ || (last && links_ > links);
            // Everything before a slash must be a directory.
            if (!last && found_.problem == Problem::None && !S_ISDIR(status().st_mode)) {
                levels_.pop_back();
                fail(ENOTDIR);
            }
            todo = std::move(next);
        }
        if (found_.problem == Problem::None) takeLast();
        if (trail != nullptr) trail->keep(std::move(levels_), found_.place, directoryIn(path));
        return std::move(found_);
    }

  private:
    using Level = DirectoryTrail::Level;

    // Takes the directories that are known. Returns what follows them in the path.
    std::string start(const std::string& path, DirectoryTrail* trail) {
        if (trail == nullptr) return path;
        DirectoryTrail::Start known = trail->take(path);
        levels_ = std::move(known.levels);
        found_.place = std::move(known.place);
        return path.substr(known.length);
    }

    // The part of the path that leads to the directory of the file; empty if it does not.
    std::string_view directoryIn(std::string_view path) const {
        const std::size_t end = path.rfind('/') + 1;
        const std::string_view name = path.substr(end);
        const bool named = !name.empty() && name != "." && name != "..";
        return named && !fileIsLink_ && found_.problem == Problem::None ? path.substr(0, end)
                                                                        : std::string_view();
    }

    int current() const { return levels_.empty() ? top_ : levels_.back().handle.number(); }
    const struct stat& status() const { return levels_.empty() ? topStatus_ : levels_.back().status; }
    std::size_t placeEnd() const { return levels_.empty() ? 0 : levels_.back().placeEnd; }

    void fail(int error) {
        found_.problem = Problem::NotOpened;
        found_.error = error;
    }

    void step(const std::string& name, bool last, bool follow, std::string& rest) {
        if (name == ".") return;
        if (name == "..") return goUp();
        Level next;
        found_.place.append(1, '/').append(name);
        next.placeEnd = found_.place.size();
        // The host has chosen the top, so it may always be searched.
        if (!levels_.empty() && !disclosure_.ofSearch(status(), found_.place)) {
            found_.problem = Problem::HiddenDirectory;
            return;
        }
        const bool followed = follow || !last;
        if (last && !wantsHandle_ && lookAt(name.c_str(), followed, next)) return;
        if (found_.problem != Problem::None) return;
        next.handle = openChild(name.c_str(), last);
        if (!next.handle.isOpen() || ::fstat(next.handle.number(), &next.status) != 0) return fail(errno);
        if (next.status.st_dev != status().st_dev && isOnPseudoFileSystem(next.handle.number())) {
            found_.problem = Problem::PseudoFile;
            return;
        }
        const bool isLink = S_ISLNK(next.status.st_mode);
        found_.isLink = found_.isLink || (isLink && last);
        if (isLink && followed) return followLink(next, last, rest);
        levels_.push_back(std::move(next));
    }

    // Takes a file that needs no handle. False if one is needed: for the text of a link, and to ask for the file system.
    bool lookAt(const char* name, bool followed, Level& next) {
        if (::fstatat(current(), name, &next.status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
            fail(errno);
            return true;
        }
        const bool isLink = S_ISLNK(next.status.st_mode);
        if ((isLink && followed) || next.status.st_dev != status().st_dev) return false;
        found_.isLink = found_.isLink || isLink;
        levels_.push_back(std::move(next));
        return true;
    }

    // Opens a component on the way as a directory first, so that the kernel mounts an automount point.
    kest::Descriptor openChild(const char* name, bool last) const {
        constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
        const int directory = last ? -1 : ::openat(current(), name, kFlags | O_DIRECTORY);
        const bool perhapsLink = last || errno == ENOTDIR || errno == ELOOP;
        if (directory >= 0 || !perhapsLink) return kest::Descriptor(directory);
        return kest::Descriptor(::openat(current(), name, kFlags));
    }

    // ".." of the top is the top.
    void goUp() {
        if (levels_.empty()) return;
        if (!disclosure_.ofSearch(status(), found_.place)) {
            found_.problem = Problem::HiddenDirectory;
            return;
        }
        levels_.pop_back();
        found_.place.resize(placeEnd());
    }

    void followLink(const Level& link, bool last, std::string& rest) {
        std::array<char, 4096> text;
        const ssize_t length = ::readlinkat(link.handle.number(), "", text.data(), text.size());
        if (length <= 0) return fail(length < 0 ? errno : ENOENT);
        if (++links_ > kMaxLinks) return fail(ELOOP);
        found_.place.resize(placeEnd());
        std::string target(text.data(), static_cast<std::size_t>(length));
        if (target.front() == '/') {
            levels_.clear();
            found_.place.clear();
        }
        if (!last) target.append(1, '/').append(rest);
        rest = std::move(target);
    }

    // Takes the file out of the directories that led to it.
    void takeLast() {
        found_.status = status();
        if (!levels_.empty()) {
            found_.handle = std::move(levels_.back().handle);
            levels_.pop_back();
        } else if (wantsHandle_) {
            found_.handle = kest::Descriptor(::fcntl(top_, F_DUPFD_CLOEXEC, 3));
        }
        if (wantsHandle_ && !found_.handle.isOpen()) fail(errno);
    }

    const Disclosure& disclosure_;
    int top_;
    const struct stat& topStatus_;
    bool wantsHandle_;
    std::vector<Level> levels_;
    FoundFile found_;
    int links_ = 0;
    bool fileIsLink_ = false;  // whether the last name of the path was a link that was followed
};

}  // namespace

bool DirectoryTrail::wasAsked(const std::string& path) const {
    return !asked_.empty() && path.starts_with(asked_) && path.find('/', asked_.size()) == std::string::npos;
}

// The number of the directories that the path begins with.
std::size_t DirectoryTrail::countCommon(const std::string& path) const {
    std::size_t end = 0;
    for (std::size_t count = 0; count < levels_.size(); ++count) {
        const std::size_t next = levels_[count].placeEnd;
        // The file itself is not one of the directories.
        const bool goesOn =
            path.size() > next && path[next] == '/' && path.find_first_not_of('/', next) != std::string::npos;
        if (!goesOn || path.compare(end, next - end, place_, end, next - end) != 0) return count;
        end = next;
    }
    return levels_.size();
}

DirectoryTrail::Start DirectoryTrail::take(const std::string& path) {
    Start start;
    if (!levels_.empty() && Clock::now() - opened_ < kMaxAge) {
        const bool asked = wasAsked(path);
        if (!asked) levels_.resize(countCommon(path));
        start.place.assign(place_, 0, levels_.empty() ? 0 : levels_.back().placeEnd);
        start.length = asked ? asked_.size() - 1 : start.place.size();
        start.levels = std::move(levels_);
    }
    levels_.clear();
    if (start.levels.empty()) opened_ = Clock::now();
    return start;
}

void DirectoryTrail::keep(std::vector<Level> levels, const std::string& place, std::string_view asked) {
    levels_ = std::move(levels);
    asked_ = levels_.size() > kMaxLevels ? std::string_view() : asked;
    if (levels_.size() > kMaxLevels)
        levels_.erase(levels_.begin() + static_cast<std::ptrdiff_t>(kMaxLevels), levels_.end());
    place_.assign(place, 0, levels_.empty() ? 0 : levels_.back().placeEnd);
}

FileFinder::FileFinder(const Root& root, const Disclosure& disclosure)
    : disclosure_(disclosure),
      kernelResolves_(root.lookup() == Root::Lookup::Kernel),
      top_(root.openStrictly("/", O_PATH | O_DIRECTORY)) {
    if (!top_.isOpen()) return;
    ::fstat(top_.number(), &topStatus_);
    topIsPseudo_ = isOnPseudoFileSystem(top_.number());
}

// Whether a file can be found without looking at the directories on the way. Otherwise this is needed to find out what may be
// searched.
bool FileFinder::mayFindAtOnce(const std::string& path) const {
    return kernelResolves_ && !topIsPseudo_ && disclosure_.seesAll() && isPlain(path);
}

// False if there are links or other file systems on the way, or no such file.
bool FileFinder::findAtOnce(const std::string& path, bool follow, FoundFile& found) const {
    if (!mayFindAtOnce(path)) return false;
    const int flags = O_PATH | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW);
    found.handle = kest::Descriptor(openResolved(top_.number(), path.c_str() + 1, flags, kPlainly));
    if (!found.handle.isOpen() || ::fstat(found.handle.number(), &found.status) != 0) return false;
    found.isLink = S_ISLNK(found.status.st_mode);
    found.place = path;
    return true;
}

bool FileFinder::isRegular(const char* inTop) const {
    struct stat status {};
    return ::fstatat(top_.number(), inTop, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0 &&
           S_ISREG(status.st_mode);
}

// False as well if it is no regular file. Opening a device for reading may have side effects, so its kind is looked at first.
bool FileFinder::openAtOnce(const std::string& path, bool expected, FoundFile& found) const {
    if (!mayFindAtOnce(path)) return false;
    const char* const inTop = path.c_str() + 1;
    if (!expected && !isRegular(inTop)) return false;
    found.handle =
        openQuietly([&](int flags) { return openResolved(top_.number(), inTop, flags, kPlainly); });
    found.place = path;
    return found.handle.isOpen() && ::fstat(found.handle.number(), &found.status) == 0 &&
           S_ISREG(found.status.st_mode);
}

FoundFile FileFinder::find(const std::string& path, bool follow, DirectoryTrail* trail) const {
    FoundFile found;
    if (findAtOnce(path, follow, found)) return found;
    return PathResolver(disclosure_, top_.number(), topStatus_, true).resolve(path, follow, trail);
}

FoundFile FileFinder::open(const std::string& path, bool expected, DirectoryTrail* trail) const {
    FoundFile found;
    if (openAtOnce(path, expected, found)) return found;
    found = find(path, true, trail);
    if (found.problem != Problem::None || !S_ISREG(found.status.st_mode)) return found;
    found.handle = reopened(found.handle);
    if (!found.handle.isOpen()) found.error = errno;
    return found;
}

FoundFile FileFinder::look(const std::string& path, bool follow, DirectoryTrail* trail) const {
    return PathResolver(disclosure_, top_.number(), topStatus_, false).resolve(path, follow, trail);
}

}  // namespace toolkit::quorvis
