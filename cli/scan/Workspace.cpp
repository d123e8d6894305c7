#include "cli/scan/Workspace.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/scan/ErrorMessages.h"
#include "cli/scan/LocationFile.h"
#include "cli/system/Failure.h"
#include "cli/system/PathTrust.h"
#include "cli/system/SignalCleanup.h"
#include "cli/system/TreeRemoval.h"
#include "include/zav.h"

namespace zavcli {

namespace {

constexpr int kAttempts = 100;
constexpr std::size_t kBootDigits = 8;

// The prefix of the directory names of this machine since its last boot. The temporary directory may be
// shared with other machines. Empty if the boot id is unknown.
std::string leadOfThisMachine() {
    std::string boot;
    if (!(std::ifstream("/proc/sys/kernel/random/boot_id") >> boot) || boot.size() < kBootDigits) return "";
    return "zav-" + boot.substr(0, kBootDigits) + "-";
}

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

int openDirectory(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Whether the path still leads to the open directory, and only this user has access to it.
bool isOwnAt(int directory, const std::string& path) {
    struct stat open {};
    struct stat named {};
    return fstat(directory, &open) == 0 && lstat(path.c_str(), &named) == 0 && isSame(open, named) &&
           open.st_uid == geteuid() && (open.st_mode & 0777) == S_IRWXU;
}

// A directory is abandoned if its lock is free.
void removeIfAbandoned(const std::string& path) {
    const int directory = openDirectory(path);
    if (directory < 0) return;
    if (flock(directory, LOCK_EX | LOCK_NB) == 0 && isOwnAt(directory, path))
        removeTree(AT_FDCWD, path.c_str());
    close(directory);
}

void removeAbandoned(const std::string& parent, const std::string& lead) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(parent, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().starts_with(lead)) removeIfAbandoned(entry->path().string());
    }
}

void requireSafe(const std::string& directory) {
    const std::vector<Weakness> weaknesses =
        findWeaknesses(directory, PathKind::TemporaryDirectory, {geteuid()});
    if (weaknesses.empty()) return;
    throw Failure(
        kExitFailed,
        fmt::format("the temporary directory '{}' is not safe, because other users can rename files in it: "
                    "{}; TEMP or TMP can name another one",
                    directory, describe(weaknesses)));
}

}  // namespace

std::string temporaryDirectory() {
    const char* path = std::getenv("TEMP");
    if (path == nullptr) path = std::getenv("TMP");
    std::string directory = path == nullptr ? "/tmp" : path;
    collapseSlashes(directory);
    return directory;
}

Workspace::Workspace() {
    std::string parent = temporaryDirectory();
    if (!parent.ends_with('/')) parent += '/';
    requireSafe(parent);
    const std::string lead = leadOfThisMachine();
    if (!lead.empty()) removeAbandoned(parent, lead);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (make(parent + (lead.empty() ? "zav-" : lead))) return;
    }
    throw Failure(kExitFailed, std::string(errorMessage(ZAV_ERROR_WORKSPACE)));
}

// Another process may take the new directory for an abandoned one and remove it before it is locked.
bool Workspace::make(const std::string& lead) {
    const SignalsBlocked blocked;
    path_ = lead + "XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
        throw Failure(
            kExitFailed,
            fmt::format("no temporary directory could be made: {}*: {}; TEMP or TMP can name another place",
                        lead, systemErrorText(errno)));
    }
    chmod(path_.c_str(), S_IRWXU);  // the umask may have removed permissions of the owner
    lock_ = openDirectory(path_);
    if (lock_ >= 0 && flock(lock_, LOCK_EX | LOCK_NB) == 0 && isOwnAt(lock_, path_)) {
        registerTemporaryDirectory(path_);
        return true;
    }
    if (lock_ >= 0) close(lock_);
    lock_ = -1;
    rmdir(path_.c_str());
    return false;
}

Workspace::~Workspace() {
    const SignalsBlocked blocked;
    removeTree(AT_FDCWD, path_.c_str());
    registerTemporaryDirectory("");
    close(lock_);
}

}  // namespace zavcli
