#include "cli/system/PathTrust.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/system/Failure.h"

namespace zavcli {

namespace {

constexpr uid_t kRoot = 0;

std::string userName(uid_t user) {
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
        return fmt::format("the user {}", found->pw_name);
    return fmt::format("the user {}", user);
}

// The path as a word of a shell command line.
std::string quoted(const std::string& path) {
    constexpr std::string_view kHarmless =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+,:@%";
    if (path.find_first_not_of(kHarmless) == std::string::npos) return path;
    std::string text = "'";
    for (const char byte : path) byte == '\'' ? text += "'\\''" : text += byte;
    return text + "'";
}

// In a user name space, all users outside it have the same id. Root of the machine cannot be told from the others.
bool isUserOutside(uid_t user) {
    uid_t overflow = 0;
    if (!(std::ifstream("/proc/sys/kernel/overflowuid") >> overflow) || user != overflow) return false;
    std::ifstream map("/proc/self/uid_map");
    for (unsigned long inside = 0, outside = 0, count = 0; map >> inside >> outside >> count;) {
        if (user >= inside && user - inside < count) return false;
    }
    return true;
}

void pushFront(std::deque<std::string>& names, std::string_view path) {
    std::deque<std::string> front;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        if (!name.empty() && name != ".") front.emplace_back(name);
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    names.insert(names.begin(), front.begin(), front.end());
}

// Resolves a path name by name, as the kernel does, and collects the weaknesses on the way.
class PathWalk {
  public:
    PathWalk(PathKind kind, const std::vector<uid_t>& trusted) : kind_(kind), trusted_(trusted) {}

    std::vector<Weakness> run(const std::string& path) {
        std::error_code error;
        std::string start = path;
        if (!path.starts_with('/')) start = std::filesystem::current_path(error).string() + "/" + path;
        pushFront(names_, start);
        visitDirectory("/");
        bool onDirectory = true;
        while (!names_.empty() && onDirectory) onDirectory = visitNext();
        if (onDirectory && kind_ == PathKind::Directory) checkNotShared();
        return std::move(weaknesses_);
    }

  private:
    // Returns whether the next name can be looked up, that is, whether a directory was reached.
    bool visitNext() {
        const std::string name = std::move(names_.front());
        names_.pop_front();
        if (name == "..") {
            directory_ = std::filesystem::path(directory_).parent_path().string();
            return true;
        }
        const std::string path = (directory_ == "/" ? "" : directory_) + "/" + name;
        struct stat status {};
        if (lstat(path.c_str(), &status) != 0) {
            reportMissing(path, errno);
            return false;
        }
        checkOwner(path, status);
        if (S_ISLNK(status.st_mode)) return follow(path);
        if (S_ISDIR(status.st_mode)) {
            directory_ = path;
            checkDirectory(path, status);
            return true;
        }
        if ((status.st_mode & kWritableByOthers) != 0) addWritable(path, status.st_mode, "chmod go-w");
        return false;
    }

    bool follow(const std::string& path) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(path, error).string();
        if (error || ++links_ > kMaxLinks) return false;
        if (target.starts_with('/')) directory_ = "/";
        pushFront(names_, target);
        return true;
    }

    void visitDirectory(const std::string& path) {
        struct stat status {};
        if (lstat(path.c_str(), &status) != 0) return;
        directory_ = path;
        checkOwner(path, status);
        checkDirectory(path, status);
    }

    // In a directory with the sticky bit, users cannot rename or remove the files of others.
    void checkDirectory(const std::string& path, const struct stat& status) {
        if ((status.st_mode & kWritableByOthers) == 0 || (status.st_mode & S_ISVTX) != 0) return;
        const bool temporary = names_.empty() && kind_ == PathKind::TemporaryDirectory;
        addWritable(path, status.st_mode, temporary ? "chmod +t" : "chmod go-w");
    }

    // The sticky bit does not prevent others from adding files to the directory.
    void checkNotShared() {
        struct stat status {};
        if (lstat(directory_.c_str(), &status) != 0 || (status.st_mode & S_ISVTX) == 0) return;
        if ((status.st_mode & kWritableByOthers) != 0) addWritable(directory_, status.st_mode, "chmod go-w");
    }

    bool othersMayAdd() const {
        struct stat status {};
        return lstat(directory_.c_str(), &status) == 0 && (status.st_mode & kWritableByOthers) != 0;
    }

    void checkOwner(const std::string& path, const struct stat& status) {
        const uid_t owner = status.st_uid;
        if (owner == kRoot || std::find(trusted_.begin(), trusted_.end(), owner) != trusted_.end()) return;
        if (isUserOutside(owner)) return;
        const char* const command = S_ISLNK(status.st_mode) ? "chown -h root" : "chown root";
        add(path, "belongs to " + userName(owner), command);
    }

    void reportMissing(const std::string& path, int error) {
        if (error == ENOENT && othersMayAdd())
            add(path, "does not exist, and other users can create it", "mkdir");
        if (error != ENOENT && error != ENOTDIR)
            weaknesses_.push_back({path, "cannot be examined: " + systemErrorText(error), ""});
    }

    void addWritable(const std::string& path, mode_t mode, const char* command) {
        add(path, (mode & S_IWOTH) != 0 ? "can be changed by all users" : "can be changed by its group",
            command);
    }

    void add(const std::string& path, std::string reason, const char* command) {
        weaknesses_.push_back({path, std::move(reason), fmt::format("{} {}", command, quoted(path))});
    }

    PathKind kind_;
    const std::vector<uid_t>& trusted_;
    std::deque<std::string> names_;  // still to be resolved
    std::string directory_;          // in which the first of them is looked up
    int links_ = 0;
    std::vector<Weakness> weaknesses_;
};

// Whether the user owns the file, or a directory or link on the way to it.
bool ownsPartOf(uid_t user, const std::string& path) {
    const std::vector<Weakness> without = findWeaknesses(path, PathKind::File, {});
    const std::vector<Weakness> with = findWeaknesses(path, PathKind::File, {user});
    return with.size() < without.size();
}

}  // namespace

std::vector<uid_t> trustedUsers(std::string_view command) {
    std::vector<uid_t> users{geteuid()};
    const char* const text = std::getenv("SUDO_UID");
    if (text == nullptr || geteuid() != kRoot) return users;
    const std::string_view digits = text;
    uid_t user = kRoot;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), user);
    if (error != std::errc() || end != digits.data() + digits.size()) return users;
    if (ownsPartOf(user, std::string(command))) users.push_back(user);
    return users;
}

std::vector<Weakness> findWeaknesses(const std::string& path, PathKind kind,
                                     const std::vector<uid_t>& trusted) {
    return PathWalk(kind, trusted).run(path);
}

void mergeWeaknesses(std::vector<Weakness>& weaknesses, const std::vector<Weakness>& others) {
    for (const Weakness& other : others) {
        if (std::find(weaknesses.begin(), weaknesses.end(), other) == weaknesses.end())
            weaknesses.push_back(other);
    }
}

std::string describe(const std::vector<Weakness>& weaknesses) {
    std::vector<std::string> texts;
    for (const auto& [path, reason, remedy] : weaknesses) {
        texts.push_back(fmt::format("{} {}", path, reason));
        if (!remedy.empty()) texts.push_back(fmt::format("'{}' fixes that", remedy));
    }
    return fmt::format("{}", fmt::join(texts, "; "));
}

}  // namespace zavcli
