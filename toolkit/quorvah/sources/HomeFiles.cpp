#include "toolkit/quorvah/sources/HomeFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/MountedDrives.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxFile = std::size_t{1} << 20;

bool lies(const std::string& path, const std::string& directory) {
    if (directory == "/") return true;
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

// At most kMaxFile bytes; nothing if there are more or reading fails.
std::optional<std::string> readBounded(int file, const Root& root) {
    std::string content;
    std::array<char, 16384> block;
    for (;;) {
        root.checkTime();
        const ssize_t count = ::read(file, block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) return content;
        content.append(block.data(), static_cast<std::size_t>(count));
        if (content.size() > kMaxFile) return std::nullopt;
    }
}

}  // namespace

HomeFiles::HomeFiles(const Root& root, const std::vector<Mount>& mounts, std::string home,
                     std::uint32_t owner)
    : root_(root), mounts_(mounts), home_(std::move(home)), owner_(owner) {
    if (!home_.starts_with('/')) return;
    root_.checkTime();
    refused_ = !isLocal(home_);
    if (refused_) return;
    directory_ = root_.openStrictly(home_, O_PATH | O_DIRECTORY);
    if (!directory_.isOpen()) note(errno);
}

// The last of the mounts that contain a path is the one that shows it.
bool HomeFiles::isLocal(const std::string& path) const {
    const Mount* innermost = nullptr;
    for (const Mount& mount : mounts_) {
        if (!lies(path, mount.mountPoint)) continue;
        if (innermost == nullptr || mount.mountPoint.size() >= innermost->mountPoint.size())
            innermost = &mount;
    }
    if (innermost == nullptr || !root_.running()) return true;
    if (innermost->type == "autofs") return false;
    const FileSystemKind kind = fileSystemKind(*innermost);
    return kind == FileSystemKind::Local || kind == FileSystemKind::Pseudo;
}

void HomeFiles::note(int error) {
    if (error == EACCES || error == EPERM) denied_ = true;
    if (error == ELOOP || error == ENOTDIR || error == ENXIO) refused_ = true;
}

kest::Descriptor HomeFiles::openFile(std::string_view path) {
    kest::Descriptor directory(::fcntl(directory_.number(), F_DUPFD_CLOEXEC, 3));
    for (;;) {
        const std::string name(takeField(path, '/'));
        const bool last = path.empty();
        const int flags = last ? O_RDONLY | O_NONBLOCK | O_NOCTTY : O_PATH | O_DIRECTORY;
        kest::Descriptor next(::openat(directory.number(), name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC));
        if (last || !next.isOpen()) return next;
        directory = std::move(next);
    }
}

std::optional<std::string> HomeFiles::read(std::string_view path) {
    if (!isOpen()) return std::nullopt;
    root_.checkTime();
    if (!isLocal(home_ + "/" + std::string(path))) {
        refused_ = true;
        return std::nullopt;
    }
    const kest::Descriptor file = openFile(path);
    if (!file.isOpen()) {
        note(errno);
        return std::nullopt;
    }
    struct stat status {};
    const bool regular = ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
    // A captured tree has the owner who unpacked it.
    const bool owned = !root_.running() || status.st_uid == owner_ || status.st_uid == 0;
    std::optional<std::string> content;
    if (regular && owned) content = readBounded(file.number(), root_);
    if (content) root_.noteOpened(home_ + "/" + std::string(path), O_RDONLY | O_NOFOLLOW, file);
    if (!content) refused_ = true;
    return content;
}

}  // namespace toolkit::quorvah
