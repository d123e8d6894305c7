#include "toolkit/quorvis/files/FileFinder.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/files/Disclosure.h"

namespace toolkit::quorvis {

namespace {

constexpr int kMaxLinks = 40;  // the limit of the kernel
using Problem = FoundFile::Problem;

// Resolves one path from the top.
class PathResolver {
  public:
    PathResolver(const Disclosure& disclosure, int top, const struct stat& topStatus)
        : disclosure_(disclosure), top_(top), topStatus_(topStatus) {}

    FoundFile resolve(std::string todo, bool follow) {
        while (found_.problem == Problem::None && !todo.empty()) {
            std::string_view rest = todo;
            const std::string name(takeField(rest, '/'));
            const bool last = rest.empty() && !todo.ends_with('/');
            std::string next(rest);
            if (!name.empty()) step(name, last, follow, next);
            // Everything before a slash must be a directory.
            if (!last && found_.problem == Problem::None && !S_ISDIR(status().st_mode)) fail(ENOTDIR);
            todo = std::move(next);
        }
        return take();
    }

  private:
    struct Level {
        kest::Descriptor handle;
        struct stat status {};
        std::size_t placeLength = 0;  // of the parent directory
    };

    int current() const { return levels_.empty() ? top_ : levels_.back().handle.number(); }
    const struct stat& status() const { return levels_.empty() ? topStatus_ : levels_.back().status; }

    void fail(int error) {
        found_.problem = Problem::NotOpened;
        found_.error = error;
    }

    void step(const std::string& name, bool last, bool follow, std::string& rest) {
        if (name == ".") return;
        if (name == "..") return goUp();
        Level next;
        next.placeLength = found_.place.size();
        found_.place.append(1, '/').append(name);
        // The host has chosen the top, so it may always be searched.
        if (!levels_.empty() && !disclosure_.ofSearch(status(), found_.place)) {
            found_.problem = Problem::HiddenDirectory;
            return;
        }
        next.handle = openChild(name.c_str(), last);
        if (!next.handle.isOpen() || ::fstat(next.handle.number(), &next.status) != 0) return fail(errno);
        if (next.status.st_dev != status().st_dev && isOnPseudoFileSystem(next.handle.number())) {
            found_.problem = Problem::PseudoFile;
            return;
        }
        if (S_ISLNK(next.status.st_mode) && (follow || !last)) return followLink(next, last, rest);
        levels_.push_back(std::move(next));
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
        found_.place.resize(levels_.back().placeLength);
        levels_.pop_back();
    }

    void followLink(const Level& link, bool last, std::string& rest) {
        std::array<char, 4096> text;
        const ssize_t length = ::readlinkat(link.handle.number(), "", text.data(), text.size());
        if (length <= 0) return fail(length < 0 ? errno : ENOENT);
        if (++links_ > kMaxLinks) return fail(ELOOP);
        found_.place.resize(link.placeLength);
        std::string target(text.data(), static_cast<std::size_t>(length));
        if (target.front() == '/') {
            levels_.clear();
            found_.place.clear();
        }
        if (!last) target.append(1, '/').append(rest);
        rest = std::move(target);
    }

    FoundFile take() {
        if (found_.problem != Problem::None) return std::move(found_);
        found_.status = status();
        if (levels_.empty())
            found_.handle = kest::Descriptor(::fcntl(top_, F_DUPFD_CLOEXEC, 3));
        else
            found_.handle = std::move(levels_.back().handle);
        if (!found_.handle.isOpen()) fail(errno);
        return std::move(found_);
    }

    const Disclosure& disclosure_;
    int top_;
    const struct stat& topStatus_;
    std::vector<Level> levels_;
    FoundFile found_;
    int links_ = 0;
};

}  // namespace

FileFinder::FileFinder(const Root& root, const Disclosure& disclosure)
    : disclosure_(disclosure), top_(root.openStrictly("/", O_PATH | O_DIRECTORY)) {
    if (top_.isOpen()) ::fstat(top_.number(), &topStatus_);
}

FoundFile FileFinder::find(const std::string& path, bool follow) const {
    return PathResolver(disclosure_, top_.number(), topStatus_).resolve(path, follow);
}

}  // namespace toolkit::quorvis
