#include "cli/system/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/magic.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/system/Failure.h"
#include "cli/system/PathTrust.h"
#include "cli/system/SignalCleanup.h"
#include "cli/system/StandardStreams.h"

namespace zavcli {

namespace {

constexpr const char* kUseStandardOutput = "to write to standard output, omit --output or use '--output -'";
constexpr int kAttempts = 100;

mode_t currentMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

// Whether the path is a link to an open file of a process, such as /dev/stdout, which leads to /proc/self/fd/1.
bool leadsToOpenFile(std::filesystem::path path) {
    std::error_code error;
    for (int links = 0; links < kMaxLinks; ++links) {
        const std::filesystem::path directory =
            std::filesystem::canonical(path.has_parent_path() ? path.parent_path() : ".", error);
        if (error) return false;
        struct statfs system {};
        if (statfs(directory.c_str(), &system) == 0 && system.f_type == PROC_SUPER_MAGIC) return true;
        const std::filesystem::path target =
            std::filesystem::read_symlink(directory / path.filename(), error);
        if (error) return false;
        path = directory / target;
    }
    return false;
}

// Unpredictable, and short enough for every file system.
std::string temporaryName() {
    std::array<unsigned long, 2> random{};
    if (getrandom(random.data(), sizeof random, 0) != sizeof random) random = {1, 1};
    return fmt::format(".zav-{:x}{:x}", random[0], random[1]);
}

const char* kindOf(mode_t mode) {
    if (S_ISFIFO(mode)) return "a named pipe";
    if (S_ISSOCK(mode)) return "a socket";
    return "a device";
}

}  // namespace

OutputFile::OutputFile(std::string path, Access access) : path_(std::move(path)) {
    try {
        openDirectory();
        checkEarlierFile();
        if (access == Access::Owner) mode_ = 0600;
        if (!openUnnamed()) openTemporary();
    } catch (...) {
        if (directory_ >= 0) close(directory_);
        throw;
    }
}

// The directory is opened once. A later change of the path does not redirect the file.
void OutputFile::openDirectory() {
    const std::size_t slash = path_.rfind('/');
    name_ = slash == std::string::npos ? path_ : path_.substr(slash + 1);
    if (path_.empty()) refuse("it has no name");
    if (name_.empty() || name_ == "." || name_ == "..") refuse("it is a directory");
    const std::string directory = slash == std::string::npos ? "." : path_.substr(0, slash + 1);
    directory_ = open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (directory_ < 0) fail();
}

// The earlier file is not opened, because opening a pipe or a device may block or have side effects.
void OutputFile::checkEarlierFile() {
    struct stat earlier {};
    if (fstatat(directory_, name_.c_str(), &earlier, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) fail();
        return;
    }
    if (S_ISLNK(earlier.st_mode)) {
        requireReplaceableLink();
        return;
    }
    if (S_ISDIR(earlier.st_mode)) refuse("it is a directory");
    if (!S_ISREG(earlier.st_mode))
        refuse(fmt::format("it is {}; {}", kindOf(earlier.st_mode), kUseStandardOutput));
    if (faccessat(directory_, name_.c_str(), W_OK, AT_EACCESS | AT_SYMLINK_NOFOLLOW) != 0) fail();
    if (earlier.st_uid != geteuid()) return;
    mode_ = earlier.st_mode & 0777 & ~(currentMask() & kWritableByOthers);
}

// Links to devices and open files, such as those in /dev, are used by other programs and must not be replaced.
void OutputFile::requireReplaceableLink() const {
    if (leadsToOpenFile(path_))
        refuse(fmt::format("it is an open file of a process; {}", kUseStandardOutput));
    struct stat target {};
    if (fstatat(directory_, name_.c_str(), &target, 0) != 0) return;
    if (S_ISCHR(target.st_mode) || S_ISBLK(target.st_mode))
        refuse(fmt::format("it leads to a device; {}", kUseStandardOutput));
}

// A file without a name cannot be left behind. Returns false if the file system does not support such files.
bool OutputFile::openUnnamed() {
    descriptor_ = openat(directory_, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode_ ? 0600 : 0666);
    if (descriptor_ >= 0) return true;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT) fail();
    return false;
}

void OutputFile::openTemporary() {
    const SignalsBlocked blocked;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        temporary_ = temporaryName();
        descriptor_ = openat(directory_, temporary_.c_str(),
                             O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, mode_ ? 0600 : 0666);
        if (descriptor_ >= 0) {
            registerUnfinishedFile(directory_, temporary_);
            return;
        }
        if (errno != EEXIST) break;
    }
    temporary_.clear();
    fail();
}

void OutputFile::removeTemporary() {
    if (temporary_.empty()) return;
    const SignalsBlocked blocked;
    unlinkat(directory_, temporary_.c_str(), 0);
    registerUnfinishedFile(-1, "");
    temporary_.clear();
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) close(descriptor_);
    removeTemporary();
    close(directory_);
}

void OutputFile::refuse(std::string_view reason) const {
    throw Failure(kExitFailed, fmt::format("cannot write '{}': {}", path_, reason));
}

void OutputFile::fail() const {
    refuse(systemErrorText(errno));
}

void OutputFile::writeContent(std::string_view text) {
    if (!writeAll(descriptor_, text)) fail();
    if (mode_ && fchmod(descriptor_, *mode_) != 0) fail();
    if (fsync(descriptor_) != 0) fail();
}

// Links the unnamed file under a temporary name, because only renaming replaces an earlier file. Returns false if the
// system does not permit it.
bool OutputFile::linkTemporary() {
    const std::string open = fmt::format("/proc/self/fd/{}", descriptor_);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        temporary_ = temporaryName();
        if (linkat(AT_FDCWD, open.c_str(), directory_, temporary_.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            registerUnfinishedFile(directory_, temporary_);
            return true;
        }
        if (errno != EEXIST) break;
    }
    temporary_.clear();
    return false;
}

void OutputFile::commit(std::string_view text) {
    writeContent(text);
    const SignalsBlocked blocked;
    if (temporary_.empty() && !linkTemporary()) {
        close(std::exchange(descriptor_, -1));
        openTemporary();
        writeContent(text);
    }
    if (close(std::exchange(descriptor_, -1)) != 0) fail();
    if (renameat(directory_, temporary_.c_str(), directory_, name_.c_str()) != 0) fail();
    registerUnfinishedFile(-1, "");
    temporary_.clear();
}

}  // namespace zavcli
