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
using Problem = FoundFile::Problem;

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
        if (trail != nullptr) levels_ = trail->take(path, found_.place);
        std::string todo = path.substr(found_.place.size());
        while (found_.problem == Problem::None && !todo.empty()) {
            std::string_view rest = todo;
            const std::string name(takeField(rest, '/'));
            const bool last = rest.empty() && !todo.ends_with('/');
            std::string next(rest);
            if (!name.empty()) step(name, last, follow, next);
            // Everything before a slash must be a directory.
            if (!last && found_.problem == Problem::None && !S_ISDIR(status().st_mode)) {
                levels_.pop_back();
                fail(ENOTDIR);
            }
            todo = std::move(next);
        }
        if (found_.problem == Problem::None) takeLast();
        if (trail != nullptr) trail->keep(std::move(levels_), found_.place);
        return std::move(found_);
    }

  private:
    using Level = DirectoryTrail::Level;

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
};

}  // namespace

std::vector<DirectoryTrail::Level> DirectoryTrail::take(const std::string& path, std::string& place) {
    std::vector<Level> levels = std::exchange(levels_, {});
    std::size_t count = 0;
    std::size_t end = 0;
    const bool recent = !levels.empty() && Clock::now() - opened_ < kMaxAge;
    while (recent && count < levels.size()) {
        const std::size_t next = levels[count].placeEnd;
        // The file itself is not one of the directories.
        const bool goesOn =
            path.size() > next && path[next] == '/' && path.find_first_not_of('/', next) != std::string::npos;
        if (!goesOn || path.compare(end, next - end, place_, end, next - end) != 0) break;
        end = next;
        ++count;
    }
    levels.erase(levels.begin() + static_cast<std::ptrdiff_t>(count), levels.end());
    place.assign(place_, 0, end);
    if (levels.empty()) opened_ = Clock::now();
    return levels;
}

void DirectoryTrail::keep(std::vector<Level> levels, const std::string& place) {
    levels_ = std::move(levels);
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

// Finds a file without looking at the directories on the way. False if this is needed: to follow links, to enter another file
// system, to find out what may be searched, and why there is no such file.
bool FileFinder::findAtOnce(const std::string& path, bool follow, FoundFile& found) const {
    if (!kernelResolves_ || topIsPseudo_ || !disclosure_.seesAll() || !isPlain(path)) return false;
    const int flags = O_PATH | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW);
    found.handle = kest::Descriptor(
        openResolved(top_.number(), path.c_str() + 1, flags, RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV));
    if (!found.handle.isOpen() || ::fstat(found.handle.number(), &found.status) != 0) return false;
    found.isLink = S_ISLNK(found.status.st_mode);
    found.place = path;
    return true;
}

FoundFile FileFinder::find(const std::string& path, bool follow, DirectoryTrail* trail) const {
    FoundFile found;
    if (findAtOnce(path, follow, found)) return found;
    return PathResolver(disclosure_, top_.number(), topStatus_, true).resolve(path, follow, trail);
}

FoundFile FileFinder::look(const std::string& path, bool follow, DirectoryTrail* trail) const {
    return PathResolver(disclosure_, top_.number(), topStatus_, false).resolve(path, follow, trail);
}

}  // namespace toolkit::quorvis
