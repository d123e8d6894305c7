#include "toolkit/machine/files/Root.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include "toolkit/machine/files/MountInfo.h"
#include "toolkit/machine/files/OpenResolved.h"
#include "toolkit/machine/files/PathWalk.h"
#include "toolkit/machine/files/Recorder.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {

namespace {

int openInRoot(int tree, const std::string& path, int flags) {
    return openResolved(tree, path.c_str(), flags, RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS);
}

std::string relativeToRoot(std::string_view path) {
    std::string relative(path.substr(std::min(path.find_first_not_of('/'), path.size())));
    return relative.empty() ? "." : relative;
}

// The kernel's path of an open file; empty without /proc.
std::string kernelPathOf(int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, 4097> text;
    const ssize_t length = ::readlink(link.c_str(), text.data(), text.size());
    return length <= 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(length));
}

// The number of bytes read; 0 at the end of the file, -1 on an error.
ssize_t readSome(int descriptor, char* buffer, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer, size);
        if (count >= 0 || errno != EINTR) return count;
    }
}

constexpr std::size_t kSmall = std::size_t{16} << 10;

// Reads until the end of the file or until there are more than `most` bytes. False when reading fails.
bool readPieces(int descriptor, std::size_t most, const Root& root, std::string& content) {
    // Most files are sysfs attributes of a few bytes, for which this buffer suffices.
    std::array<char, 4096> buffer;
    while (content.size() <= most && content.size() < kSmall) {
        const ssize_t count = readSome(descriptor, buffer.data(), buffer.size());
        if (count <= 0) return count == 0;
        content.append(buffer.data(), static_cast<std::size_t>(count));
    }
    while (content.size() <= most) {
        root.checkTime();
        const std::size_t size = content.size();
        content.resize(size + std::min(most + 1 - size, std::max(size, std::size_t{1} << 16)));
        const ssize_t count = readSome(descriptor, content.data() + size, content.size() - size);
        content.resize(size + static_cast<std::size_t>(std::max(count, ssize_t{0})));
        if (count <= 0) return count == 0;
    }
    return true;
}

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

}  // namespace

Root::Root() {
    const kest::Descriptor probe(openResolved(AT_FDCWD, "/", O_PATH | O_CLOEXEC, RESOLVE_NO_MAGICLINKS));
    if (!probe.isOpen()) lookup_ = Lookup::ByComponent;
}

Root::Root(const std::string& directory, Lookup lookup)
    : tree_(::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      directory_(directory),
      lookup_(lookup) {
    if (!tree_.isOpen()) throw std::system_error(errno, std::generic_category(), directory);
    // Old kernels do not have the call, and filters of containers deny it.
    const kest::Descriptor probe(openInRoot(tree_.number(), ".", O_PATH | O_CLOEXEC));
    if (!probe.isOpen()) lookup_ = Lookup::ByComponent;
}

void Root::note(int error) const {
    if (error == EACCES || error == EPERM) ++denials_;
    if (error == EREMOTE) ++avoidances_;
}

kest::Descriptor Root::openBelow(std::string_view path, int flags) const {
    const std::string relative = relativeToRoot(path);
    if (lookup_ == Lookup::ByComponent) return openByComponent(tree_.number(), relative, flags);
    return kest::Descriptor(openInRoot(tree_.number(), relative, flags));
}

kest::Descriptor Root::open(std::string_view path, int flags) const {
    checkTime();
    flags |= O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    if ((flags & O_PATH) != 0) flags &= ~(O_NOCTTY | O_NONBLOCK);  // openat2 does not accept them with O_PATH
    kest::Descriptor opened = !avoided_.empty() ? openLocally(path, flags, 0)
                              : live()          ? kest::Descriptor(::open(std::string(path).c_str(), flags))
                                                : openBelow(path, flags);
    if (!opened.isOpen()) note(errno);
    noteOpened(path, flags, opened);
    return opened;
}

void Root::noteOpened(std::string_view path, int flags, const kest::Descriptor& opened) const {
    if (recorder_ == nullptr) return;
    const int error = errno;
    recorder_->noteOpened(path, flags, opened, error, deadline_);
    errno = error;
}

kest::Descriptor Root::openStrictly(std::string_view path, int flags, std::uint64_t resolve) const {
    kest::Descriptor opened = openAsTold(path, flags, resolve);
    noteOpened(path, flags, opened);
    return opened;
}

kest::Descriptor Root::openAsTold(std::string_view path, int flags, std::uint64_t resolve) const {
    flags |= O_CLOEXEC;
    resolve |= RESOLVE_NO_MAGICLINKS;
    if (!avoided_.empty()) return openLocally(path, flags, resolve);
    const std::string relative = relativeToRoot(path);
    if (live() && lookup_ == Lookup::Kernel)
        return kest::Descriptor(openResolved(AT_FDCWD, ("/" + relative).c_str(), flags, resolve));
    if (lookup_ == Lookup::Kernel)
        return kest::Descriptor(
            openResolved(tree_.number(), relative.c_str(), flags, resolve | RESOLVE_IN_ROOT));
    if (!live()) return openByComponent(tree_.number(), relative, flags);
    const kest::Descriptor top(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    return openByComponent(top.number(), relative, flags);
}

void Root::stayLocal() {
    const std::string top = live() ? "/" : kernelPathOf(tree_.number());
    // A tree has the mounts of the machine that scans it.
    const std::string mounts = Root().read("/proc/self/mountinfo").value_or(std::string());
    avoided_ = AvoidedMounts(readMountInfo(mounts), top);
}

// Without avoided mounts on the way, the kernel does the lookup, which it ends with EXDEV where another mount begins.
kest::Descriptor Root::openLocally(std::string_view path, int flags, std::uint64_t resolve) const {
    const std::string relative = relativeToRoot(path);
    const std::string absolute = "/" + relative;
    if (avoided_.contain(absolute)) {
        errno = EREMOTE;
        return {};
    }
    if (lookup_ == Lookup::Kernel) {
        kest::Descriptor opened = openOnOneMount(absolute, flags, resolve | RESOLVE_NO_XDEV);
        if (opened.isOpen() || errno != EXDEV || (resolve & RESOLVE_NO_XDEV) != 0) return opened;
    }
    if (!live()) return openByComponent(tree_.number(), relative, flags, avoided_);
    return openByComponent(mountAt("/").number(), relative, flags, avoided_);
}

kest::Descriptor Root::openOnOneMount(const std::string& path, int flags, std::uint64_t resolve) const {
    if (!live()) {
        resolve |= RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
        return kest::Descriptor(openResolved(tree_.number(), path.c_str() + 1, flags, resolve));
    }
    const std::string_view base = avoided_.baseOf(path);
    const kest::Descriptor& mount = mountAt(base);
    const char* const rest = path.c_str() + (base == "/" ? 1 : base.size() + 1);
    return kest::Descriptor(openResolved(mount.number(), rest, flags, resolve));
}

const kest::Descriptor& Root::mountAt(std::string_view path) const {
    const auto known = mounts_.find(path);
    if (known != mounts_.end()) return known->second;
    kest::Descriptor mount(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (path != "/") mount = openByComponent(mount.number(), path.substr(1), O_PATH | O_CLOEXEC, avoided_);
    return mounts_.emplace(path, std::move(mount)).first->second;
}

std::string Root::pathOf(const kest::Descriptor& file) const {
    std::string path = kernelPathOf(file.number());
    if (!path.starts_with('/')) return {};
    if (live()) return path;
    const std::string tree = kernelPathOf(tree_.number());
    if (tree == "/") return path;
    if (tree.empty() || path.compare(0, tree.size(), tree) != 0) return {};
    path.erase(0, tree.size());
    if (path.empty()) return "/";
    return path.front() == '/' ? path : std::string();
}

// Reads one byte more than `most` at most. False when the file cannot be read.
bool Root::readUpTo(std::string_view path, std::size_t most, std::string& content) const {
    const kest::Descriptor file = open(path);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    const auto size = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
    if (size > kSmall) content.reserve(std::min(most, size) + 1);
    if (readPieces(file.number(), most, *this, content)) return true;
    note(errno);
    return false;
}

std::optional<std::string> Root::read(std::string_view path, std::size_t limit) const {
    std::string content;
    if (!readUpTo(path, limit, content)) return std::nullopt;
    if (content.size() <= limit) return content;
    ++excesses_;
    return std::nullopt;
}

std::string Root::readStart(std::string_view path, std::size_t size) const {
    std::string content;
    if (!readUpTo(path, size, content)) return {};
    content.resize(std::min(content.size(), size));
    return content;
}

std::string Root::readLine(std::string_view path) const {
    std::string content;
    if (!readUpTo(path, kLineLimit, content)) return {};
    std::string_view rest = content;
    std::string_view line;
    nextLine(rest, line);
    if (line.size() <= kLineLimit) return std::string(trimmed(line));
    ++excesses_;
    return {};
}

Count Root::readCount(std::string_view path) const {
    return toolkit::readCount(readLine(path));
}

std::vector<std::string> Root::list(std::string_view path) const {
    std::vector<std::string> names;
    kest::Descriptor opened = open(path, O_DIRECTORY);
    const std::unique_ptr<DIR, CloseDirectory> directory(opened.isOpen() ? ::fdopendir(::dup(opened.number()))
                                                                         : nullptr);
    if (!directory) return names;
    while (const dirent* const entry = ::readdir(directory.get())) {
        constexpr std::size_t kBetweenLooks = 1024;
        if (names.size() % kBetweenLooks == 0) checkTime();
        if (names.size() == kMaxNames) {
            ++excesses_;
            break;
        }
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") names.emplace_back(name);
    }
    std::ranges::sort(names);
    return names;
}

std::string Root::readLink(std::string_view path) const {
    const kest::Descriptor link = open(path, O_PATH | O_NOFOLLOW);
    if (!link.isOpen()) return {};
    std::array<char, 4096> text;
    const ssize_t length = ::readlinkat(link.number(), "", text.data(), text.size());
    return length < 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(length));
}

std::string Root::linkName(std::string_view path) const {
    const std::string link = readLink(path);
    return link.substr(link.rfind('/') + 1);
}

bool Root::exists(std::string_view path) const {
    return open(path, O_PATH).isOpen();
}

bool Root::isDirectory(std::string_view path) const {
    return open(path, O_PATH | O_DIRECTORY).isOpen();
}

}  // namespace toolkit
