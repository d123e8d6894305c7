#include "toolkit/quorvis/walk/DirectoryOpener.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <system_error>
#include <utility>

#include "toolkit/machine/files/OpenResolved.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/files/Disclosure.h"

namespace toolkit::quorvis {

namespace {

bool identify(int directory, DirectoryChain::Identity& identity) {
    struct stat status {};
    if (::fstat(directory, &status) != 0) return false;
    identity = {status.st_dev, status.st_ino};
    return true;
}

using Result = DirectoryOpener::Result;

constexpr std::array<std::string_view, 13> kNeverEntered = {
    "/dev",
    "/proc",
    "/run",
    "/sys",
    "/var/lib/containerd",
    "/var/lib/containers",
    "/var/lib/docker",
    "/var/lib/incus",
    "/var/lib/kubelet",
    "/var/lib/lxc",
    "/var/lib/lxd",
    "/var/lib/machines",
    "/var/snap/lxd",
};
constexpr int kMaxLinks = 40;  // the kernel's limit
constexpr std::string_view kUsersContainers = "/.local/share/containers";

int flagsFor(bool toList) {
    return toList ? O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC : O_PATH | O_DIRECTORY | O_CLOEXEC;
}

bool isLink(int parent, const char* name) {
    struct stat status {};
    return ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

bool onSameDevice(int left, int right) {
    struct stat of[2] = {};
    return ::fstat(left, &of[0]) == 0 && ::fstat(right, &of[1]) == 0 && of[0].st_dev == of[1].st_dev;
}

Result remoteSkipped() {
    return {{},
            false,
            EventCode::RemoteSkipped,
            "A file system of another machine or of a program was not entered"};
}

Result failureOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
        case ELOOP:
            return {};  // removed meanwhile, not a directory, or a broken link
        case EACCES:
        case EPERM:
            return {{}, false, EventCode::Permission, "No permission to search this directory"};
        default:
            break;
    }
    return {{},
            false,
            EventCode::Io,
            "The directory cannot be opened: " + std::generic_category().message(error)};
}

// Whether following the symbolic links of `path` leads to a place for which `isThere` holds. Nothing below such a place is
// looked at.
bool linkLeadsInto(const Root& root, const std::string& path,
                   const std::function<bool(const std::string& place)>& isThere) {
    std::string place;
    std::string rest = path;
    for (int links = 0; !rest.empty() && links <= kMaxLinks;) {
        std::string_view tail = rest;
        const std::string name(takeField(tail, '/'));
        rest = std::string(tail);
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            place.erase(place.empty() ? 0 : place.rfind('/'));
            continue;
        }
        std::string next = place;
        next.append("/").append(name);
        if (isThere(next)) return true;
        std::string link = root.readLink(next);
        if (link.empty()) {
            place = std::move(next);
            continue;
        }
        ++links;
        if (link.front() == '/') place.clear();
        rest = link.append("/").append(rest);
    }
    return false;
}

}  // namespace

void DirectoryChain::start(std::vector<Identity> above) {
    open_.clear();
    above_ = std::move(above);
}

std::vector<DirectoryChain::Identity> DirectoryChain::above(std::size_t index) const {
    std::vector<Identity> identities = above_;
    for (std::size_t i = 0; i < index; ++i) {
        Identity identity;
        if (identify(at(i), identity)) identities.push_back(identity);
    }
    return identities;
}

bool DirectoryChain::holds(int directory) const {
    Identity wanted;
    if (!identify(directory, wanted)) return false;
    if (std::ranges::find(above_, wanted) != above_.end()) return true;
    return std::ranges::any_of(open_, [&](const Open& open) {
        Identity identity;
        return identify(open.directory.number(), identity) && identity == wanted;
    });
}

DirectoryOpener::DirectoryOpener(const Root& root, const Settings& settings)
    : root_(root),
      disclosure_(settings),
      finder_(root, disclosure_),
      mounts_(root),
      crossDevices_(settings.fileSystem.crossDevices),
      remote_(settings.fileSystem.remote),
      kernelResolves_(root.lookup() == Root::Lookup::Kernel) {
    for (const std::string& pattern : settings.fileSystem.exclude) {
        if (!problemOfPattern(pattern)) exclude_.emplace_back(pattern);
    }
}

bool DirectoryOpener::isExcluded(std::string_view path) const {
    if (std::ranges::find(kNeverEntered, path) != kNeverEntered.end() || path.ends_with(kUsersContainers))
        return true;
    return std::ranges::any_of(exclude_,
                               [path](const PathPattern& pattern) { return pattern.matches(path); });
}

bool DirectoryOpener::liesInExcluded(std::string_view path) const {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        if (isExcluded(path.substr(0, end))) return true;
        if (end == std::string_view::npos) return false;
    }
}

Result DirectoryOpener::openTop(bool toList) const {
    kest::Descriptor top = root_.openStrictly("/", flagsFor(toList));
    if (top.isOpen()) return {std::move(top), false, std::nullopt, {}};
    return failureOf(errno);
}

// With openat2, a link fails with ELOOP and a mount point with EXDEV.
int DirectoryOpener::openAt(int parent, const Child& child, bool across) {
    const std::uint64_t resolve = RESOLVE_NO_SYMLINKS | (across ? 0 : RESOLVE_NO_XDEV);
    for (;;) {
        const bool quietly = child.toList && useNoAtime_.load(std::memory_order_relaxed);
        const int flags = flagsFor(child.toList) | (quietly ? O_NOATIME : 0);
        const int descriptor = kernelResolves_ ? openResolved(parent, child.name, flags, resolve)
                                               : ::openat(parent, child.name, flags | O_NOFOLLOW);
        if (descriptor >= 0 || errno != EPERM || !quietly) return descriptor;
        useNoAtime_ = false;  // only owners and root may use O_NOATIME
    }
}

Result DirectoryOpener::opened(int parent, const Child& child, int descriptor) const {
    if (descriptor >= 0) return {kest::Descriptor(descriptor), false, std::nullopt, {}};
    const int error = errno;
    Result result = failureOf(error);
    if (error != EACCES || !child.toList) return result;
    // Its entries may still be opened by name.
    result.directory = kest::Descriptor(::openat(parent, child.name, flagsFor(false) | O_NOFOLLOW));
    result.text = "No permission to list this directory";
    return result;
}

Result DirectoryOpener::openMount(const DirectoryChain& parents, const Child& child) {
    if (!crossDevices_) return {};
    const int parent = parents.last().number();
    Result result = opened(parent, child, openAt(parent, child, true));
    if (result.directory.isOpen() && isOnPseudoFileSystem(result.directory.number())) return {};
    if (result.directory.isOpen() && parents.holds(result.directory.number()))
        return {{}, false, EventCode::Loop, "A directory is mounted inside of itself"};
    return result;
}

Result DirectoryOpener::openPlain(const DirectoryChain& parents, const Child& child) {
    if (!kernelResolves_ && mounts_.at(child.path) == MountTable::Kind::Local)
        return openMount(parents, child);
    const int parent = parents.last().number();
    const int descriptor = openAt(parent, child, false);
    if (descriptor >= 0) return opened(parent, child, descriptor);
    if (errno == EXDEV) return openMount(parents, child);
    const int error = errno;
    const bool maybeLink = error == ELOOP || (!kernelResolves_ && error == ENOTDIR);
    if (maybeLink && isLink(parent, child.name))
        return follow(parent, {child.name, child.path, true, child.toList});
    errno = error;
    return opened(parent, child, -1);
}

bool DirectoryOpener::isRemote(std::string_view place) const {
    return !remote_ && mounts_.anyRemote() && mounts_.at(place) == MountTable::Kind::Remote;
}

bool DirectoryOpener::isRemote(const DirectoryChain& parents, std::string_view path) const {
    if (!parents.behindLink() || remote_ || !mounts_.anyRemote()) return isRemote(path);
    return isRemote(placeOf(parents, path));
}

// The path without links of a child that the walk reached through a link.
std::string DirectoryOpener::placeOf(const DirectoryChain& parents, std::string_view path) const {
    std::string place = root_.pathOf(parents.last());
    if (place == "/") place.clear();
    return place.append(path.substr(path.rfind('/')));
}

bool DirectoryOpener::leadsToRemote(const std::string& path) const {
    if (remote_ || !mounts_.anyRemote()) return false;
    const std::lock_guard lock(readingLinks_);
    return linkLeadsInto(root_, path, [this](const std::string& place) { return isRemote(place); });
}

// Refuses a directory that other users may not search, and the listing of a directory that they may not list.
Result DirectoryOpener::disclosed(Result result, const std::string& place, bool toList) const {
    struct stat status {};
    if (disclosure_.seesAll() || !result.directory.isOpen() ||
        ::fstat(result.directory.number(), &status) != 0)
        return result;
    if (!disclosure_.ofSearch(status, place))
        return {{}, result.behindLink, EventCode::Denied, "Other users may not search this directory"};
    if (toList && !result.problem && !disclosure_.ofNames(status, place)) {
        result.problem = EventCode::Denied;
        result.text = "Other users may not list this directory";
    }
    return result;
}

bool DirectoryOpener::maySearch(const DirectoryChain& parents, std::string_view path) const {
    struct stat status {};
    if (!disclosure_.differs() || path.rfind('/') == 0 || ::fstat(parents.last().number(), &status) != 0)
        return true;
    return disclosure_.ofSearch(status, parents.behindLink() ? placeOf(parents, path) : std::string(path));
}

Result DirectoryOpener::follow(int parent, const Child& child) const {
    if (leadsToRemote(child.path)) return remoteSkipped();
    const FoundFile found = finder_.find(child.path, true);
    if (found.problem == FoundFile::Problem::PseudoFile) return {};
    if (found.problem == FoundFile::Problem::HiddenDirectory)
        return {{}, true, EventCode::Denied, "This leads to where other users may not look"};
    if (found.problem != FoundFile::Problem::None) {
        errno = found.error;
        return failureOf(errno);
    }
    if (!S_ISDIR(found.status.st_mode) || liesInExcluded(found.place)) return {};
    if (!crossDevices_ && !onSameDevice(parent, found.handle.number())) return {};
    Result result = opened(found.handle.number(), {".", found.place, false, child.toList},
                           ::openat(found.handle.number(), ".", flagsFor(child.toList)));
    result.behindLink = true;
    return disclosed(std::move(result), found.place, child.toList);
}

Result DirectoryOpener::open(const DirectoryChain& parents, const Child& child) {
    if (isExcluded(child.path)) return {};
    if (!parents.behindLink()) return openAllowed(parents, child);
    const std::string place = placeOf(parents, child.path);
    if (isExcluded(place)) return {};
    Result result = openAllowed(parents, {child.name, place, child.link, child.toList});
    result.behindLink = true;
    return result;
}

Result DirectoryOpener::openAllowed(const DirectoryChain& parents, const Child& child) {
    if (isRemote(child.path)) return remoteSkipped();
    if (child.link) return follow(parents.last().number(), child);
    Result result = openPlain(parents, child);
    return result.behindLink ? std::move(result) : disclosed(std::move(result), child.path, child.toList);
}

}  // namespace toolkit::quorvis
