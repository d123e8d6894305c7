#include "toolkit/machine/files/Recorder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <new>
#include <system_error>
#include <utility>

namespace toolkit {

namespace {

constexpr std::uint32_t kPermissions = 0777;
constexpr std::size_t kMaxContent = std::size_t{512} << 20;
constexpr std::uint64_t kMaxRecord = std::uint64_t{2} << 30;
constexpr std::size_t kMaxNames = 200'000;
constexpr std::size_t kMaxPaths = 1'000'000;
constexpr int kMaxLinks = 40;

// The directory of the process that asks for it. Its number means nothing in the record.
constexpr std::string_view kOwnProcess = "/proc/self";

std::size_t padding(std::size_t size) {
    return (4 - size % 4) % 4;
}

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

bool isDenied(int error) {
    return error == EACCES || error == EPERM;
}

// The number of bytes, or -1.
ssize_t readAt(int file, std::string& block, std::size_t offset) {
    for (;;) {
        const ssize_t count = ::pread(file, block.data(), block.size(), static_cast<off_t>(offset));
        if (count >= 0 || errno != EINTR) return count;
    }
}

}  // namespace

Recorder::Recorder(const std::string& file, std::string top, Filter filter)
    : top_(std::move(top)),
      filter_(std::move(filter)),
      file_(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600)),
      shared_(nullptr, [](Shared* shared) { ::munmap(shared, sizeof(Shared)); }) {
    if (!file_.isOpen()) throw std::system_error(errno, std::generic_category(), file);
    while (top_.ends_with('/')) top_.pop_back();
    void* const memory =
        ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    shared_.reset(new (memory) Shared);
}

bool Recorder::learn(const std::string& path, Known known) {
    const auto found = known_.find(path);
    if (found == known_.end() && known_.size() >= kMaxPaths) {
        shared_->tooLarge = true;
        return false;
    }
    Known& before = found == known_.end() ? known_[path] : found->second;
    if (before >= known) return false;
    before = known;
    return true;
}

void Recorder::append(std::string_view path, const struct stat& status, std::uint32_t mode,
                      std::string_view content) {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    if (path.empty()) return;
    std::array<char, 128> header;
    const int length = std::snprintf(
        header.data(), header.size(), "070701%08X%08X%08X%08X%08X%08X%08X%08X%08X%08X%08X%08X%08X",
        static_cast<unsigned>(known_.size()), mode, static_cast<unsigned>(status.st_uid),
        static_cast<unsigned>(status.st_gid), 1U,
        static_cast<unsigned>(std::clamp<std::int64_t>(status.st_mtim.tv_sec, 0, UINT32_MAX)),
        static_cast<unsigned>(content.size()), 0U, 0U, 0U, 0U, static_cast<unsigned>(path.size() + 1), 0U);
    std::string entry(header.data(), static_cast<std::size_t>(length));
    entry.append(path).push_back('\0');
    entry.append(padding(entry.size()), '\0');
    entry.append(content).append(padding(content.size()), '\0');
    written_ += entry.size();
    if (written_ > kMaxRecord) {
        shared_->tooLarge = true;
        return;
    }
    // An entry is appended by one call, so that those of several processes do not mix.
    ++shared_->writing;
    if (::write(file_.number(), entry.data(), entry.size()) != static_cast<ssize_t>(entry.size()))
        shared_->failed = true;
    else
        --shared_->writing;
}

void Recorder::addLink(const std::string& path, const struct stat& status) {
    if (!learn(path, Known::Content)) return;
    std::array<char, 4096> target;
    const ssize_t length = ::readlink((top_ + path).c_str(), target.data(), target.size());
    if (length <= 0) return;
    links_[path].assign(target.data(), static_cast<std::size_t>(length));
    append(path, status, S_IFLNK | kPermissions, links_[path]);
}

void Recorder::addDenied(const std::string& path, bool directory) {
    struct stat status {};
    if (path == "/" || !learn(path, Known::Content)) return;
    append(path, status, directory ? S_IFDIR : S_IFREG, {});
}

// Writes down that the path exists. A file is empty until its content is read.
void Recorder::addName(const std::string& path) {
    if (known_.contains(path)) return;
    struct stat status {};
    if (::lstat((top_ + path).c_str(), &status) != 0) return;
    if (S_ISLNK(status.st_mode) && path != kOwnProcess) return addLink(path, status);
    if (!learn(path, Known::Name)) return;
    if (S_ISDIR(status.st_mode) || path == kOwnProcess)
        append(path, status, S_IFDIR | 0755U, {});
    else
        append(path, status, S_IFREG | 0400U | (status.st_mode & kPermissions), {});
}

// The path without links, which are written down. Follows the last component only on request. Empty if the path does not
// exist or its end cannot be reached.
std::string Recorder::resolve(std::string_view path, Last last) {
    std::string resolved;
    std::string rest(path);
    for (int links = 0; !rest.empty();) {
        const std::size_t begin = std::min(rest.find_first_not_of('/'), rest.size());
        const std::size_t end = std::min(rest.find('/', begin), rest.size());
        const std::string name = rest.substr(begin, end - begin);
        rest.erase(0, end);
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            resolved.erase(std::min(resolved.rfind('/'), resolved.size()));
            continue;
        }
        std::string next = resolved;
        next.append("/").append(name);
        if (!known_.contains(next)) {
            struct stat status {};
            if (::lstat((top_ + next).c_str(), &status) != 0) {
                if (isDenied(errno) && !resolved.empty()) addDenied(resolved, true);
                return {};
            }
            addName(next);
        }
        const bool isLast = rest.find_first_not_of('/') == std::string::npos;
        const auto link = links_.find(next);
        if (link == links_.end() || (isLast && last == Last::Keep)) {
            resolved = next;
            continue;
        }
        if (++links > kMaxLinks) return {};
        if (link->second.starts_with('/')) resolved.clear();
        rest.insert(0, link->second);
    }
    return resolved.empty() ? "/" : resolved;
}

void Recorder::addFile(const std::string& path, const kest::Descriptor& file, const struct stat& status) {
    if (outOfTime() || !learn(path, Known::Content)) return;
    std::string content;
    std::string block(std::size_t{64} << 10, '\0');
    for (;;) {
        // Part of a file would pass for the whole.
        if (outOfTime()) return;
        const ssize_t count = readAt(file.number(), block, content.size());
        // Some files of the kernel can be opened but not read.
        if (count < 0 && isDenied(errno)) return append(path, status, S_IFREG, {});
        if (count <= 0) break;
        content.append(block, 0, static_cast<std::size_t>(count));
        if (content.size() > kMaxContent) {
            shared_->tooLarge = true;
            return;
        }
    }
    if (filter_) content = filter_(path, std::move(content));
    append(path, status, S_IFREG | 0400U | (status.st_mode & kPermissions), content);
}

void Recorder::addDirectory(const std::string& path, const kest::Descriptor& directory) {
    if (outOfTime() || !learn(path, Known::Content)) return;
    const int copy = ::openat(directory.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, CloseDirectory> listing(copy < 0 ? nullptr : ::fdopendir(copy));
    if (!listing) return;
    std::size_t count = 0;
    while (const dirent* const entry = ::readdir(listing.get())) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (name == "." || name == "..") continue;
        if (outOfTime()) return;
        if (++count > kMaxNames) {
            shared_->tooLarge = true;
            return;
        }
        addName((path == "/" ? "" : path) + "/" + std::string(name));
    }
}

void Recorder::noteOpened(std::string_view path, int flags, const kest::Descriptor& opened, int error,
                          std::optional<Clock::time_point> deadline) {
    deadline_ = deadline;
    const bool keepsLink = (flags & O_NOFOLLOW) != 0;
    const std::string resolved = resolve(path, keepsLink ? Last::Keep : Last::Follow);
    if (resolved.empty() || resolved == "/") {
        if (resolved == "/" && opened.isOpen() && (flags & O_PATH) == 0) addDirectory(resolved, opened);
        return;
    }
    if (!opened.isOpen()) {
        if (!isDenied(error)) return;
        struct stat status {};
        if (::lstat((top_ + resolved).c_str(), &status) == 0) addDenied(resolved, S_ISDIR(status.st_mode));
        return;
    }
    if ((flags & O_PATH) != 0) return;  // resolve() has written down that it exists
    struct stat status {};
    if (::fstat(opened.number(), &status) != 0) return;
    if (S_ISDIR(status.st_mode))
        addDirectory(resolved, opened);
    else if (S_ISREG(status.st_mode))
        addFile(resolved, opened, status);
}

std::string Recorder::finish() {
    known_.clear();
    struct stat none {};
    written_ = 0;
    append("TRAILER!!!", none, 0, {});
    if (shared_->tooLarge) return "the files are larger than the record may be";
    if (shared_->failed || shared_->writing != 0) return "writing the record failed";
    return {};
}

}  // namespace toolkit
