#include "cli/system/Output.h"

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

#include "cli/system/Ending.h"
#include "cli/system/Failure.h"
#include "cli/system/StandardStreams.h"

namespace zavcli {

namespace {

constexpr const char* kDirectly = "without --output, or with '--output -', the text goes to standard output";
constexpr mode_t kWriteOfOthers = S_IWGRP | S_IWOTH;
constexpr int kMostLinks = 40;
constexpr int kAttempts = 100;

std::string systemError() {
    return std::generic_category().message(errno);
}

mode_t currentMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

// Such a link is an open file of a process, as /dev/stdout is one by way of /proc/self/fd/1.
bool leadsToOpenFile(std::filesystem::path path) {
    std::error_code error;
    for (int links = 0; links < kMostLinks; ++links) {
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

// Not to be guessed, nor longer than any name may be.
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

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    try {
        openDirectory();
        judgeEarlier();
        if (!openUnnamed()) openNamed();
    } catch (...) {
        if (directory_ >= 0) close(directory_);
        throw;
    }
}

// All that follows happens in the directory that is found now, whatever becomes of the path to it.
void OutputFile::openDirectory() {
    const std::size_t slash = path_.rfind('/');
    name_ = slash == std::string::npos ? path_ : path_.substr(slash + 1);
    if (path_.empty()) refuse("it has no name");
    if (name_.empty() || name_ == "." || name_ == "..") refuse("it is a directory");
    const std::string directory = slash == std::string::npos ? "." : path_.substr(0, slash + 1);
    directory_ = open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (directory_ < 0) fail();
}

// Nothing that stands in the place is opened: opening a pipe or a device may wait or change something.
void OutputFile::judgeEarlier() {
    struct stat earlier {};
    if (fstatat(directory_, name_.c_str(), &earlier, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) fail();
        return;
    }
    if (S_ISLNK(earlier.st_mode)) {
        requireReplaceable();
        return;
    }
    if (S_ISDIR(earlier.st_mode)) refuse("it is a directory");
    if (!S_ISREG(earlier.st_mode)) refuse(fmt::format("it is {}; {}", kindOf(earlier.st_mode), kDirectly));
    if (faccessat(directory_, name_.c_str(), W_OK, AT_EACCESS | AT_SYMLINK_NOFOLLOW) != 0) fail();
    if (earlier.st_uid != geteuid()) return;
    kept_ = earlier.st_mode & 0777 & ~(currentMask() & kWriteOfOthers);
}

// A link in /dev serves every program.
void OutputFile::requireReplaceable() const {
    if (leadsToOpenFile(path_)) refuse(fmt::format("it stands for an open file of a process; {}", kDirectly));
    struct stat target {};
    if (fstatat(directory_, name_.c_str(), &target, 0) != 0) return;
    if (S_ISCHR(target.st_mode) || S_ISBLK(target.st_mode))
        refuse(fmt::format("it leads to a device; {}", kDirectly));
}

// Without a name, nothing can be left behind. False where the file system has no such files.
bool OutputFile::openUnnamed() {
    descriptor_ = openat(directory_, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, kept_ ? 0600 : 0666);
    if (descriptor_ >= 0) return true;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT) fail();
    return false;
}

void OutputFile::openNamed() {
    const SignalsHeld held;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        temporary_ = temporaryName();
        descriptor_ = openat(directory_, temporary_.c_str(),
                             O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, kept_ ? 0600 : 0666);
        if (descriptor_ >= 0) {
            noteUnfinishedFile(directory_, temporary_);
            return;
        }
        if (errno != EEXIST) break;
    }
    temporary_.clear();
    fail();
}

void OutputFile::removeNamed() {
    if (temporary_.empty()) return;
    const SignalsHeld held;
    unlinkat(directory_, temporary_.c_str(), 0);
    noteUnfinishedFile(-1, "");
    temporary_.clear();
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) close(descriptor_);
    removeNamed();
    close(directory_);
}

void OutputFile::refuse(std::string_view reason) const {
    throw Failure(kExitFailed, fmt::format("cannot write '{}': {}", path_, reason));
}

void OutputFile::fail() const {
    refuse(systemError());
}

void OutputFile::fill(std::string_view text) {
    if (!writeAll(descriptor_, text)) fail();
    if (kept_ && fchmod(descriptor_, *kept_) != 0) fail();
    if (fsync(descriptor_) != 0) fail();
}

// Where the process may not name the file, another one with a name must do.
bool OutputFile::giveName() {
    const std::string open = fmt::format("/proc/self/fd/{}", descriptor_);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        temporary_ = temporaryName();
        if (linkat(AT_FDCWD, open.c_str(), directory_, temporary_.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            noteUnfinishedFile(directory_, temporary_);
            return true;
        }
        if (errno != EEXIST) break;
    }
    temporary_.clear();
    return false;
}

void OutputFile::commit(std::string_view text) {
    fill(text);
    const SignalsHeld held;
    if (temporary_.empty() && !giveName()) {
        close(std::exchange(descriptor_, -1));
        openNamed();
        fill(text);
    }
    if (close(std::exchange(descriptor_, -1)) != 0) fail();
    if (renameat(directory_, temporary_.c_str(), directory_, name_.c_str()) != 0) fail();
    noteUnfinishedFile(-1, "");
    temporary_.clear();
}

void writeStandardOutput(std::string_view text) {
    if (!writeAll(STDOUT_FILENO, text))
        throw Failure(kExitFailed, fmt::format("cannot write to standard output: {}", systemError()));
}

}  // namespace zavcli
