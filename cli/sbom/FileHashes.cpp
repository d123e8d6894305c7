#include "cli/sbom/FileHashes.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "cli/system/Failure.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxSize = std::size_t{256} << 20;
constexpr std::size_t kBlockSize = std::size_t{64} << 10;
constexpr std::chrono::seconds kMaxTime{120};

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }

  private:
    int number_;
};

// Does not wait for the writer of a pipe and does not make a terminal the controlling one.
int openBelow(int root, const std::string& path) {
    open_how how{};
    how.flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
    return static_cast<int>(syscall(SYS_openat2, root, path.c_str(), &how, sizeof how));
}

// Why the file is not read; empty if it may be.
std::string refusalOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) return kNotRegular;
    if ((status.st_mode & S_IROTH) == 0) return "other users may not read it";
    if (static_cast<std::size_t>(status.st_size) > kMaxSize) return "too large";
    return "";
}

}  // namespace

FileHasher::FileHasher(const std::string& root)
    : root_(open(root.empty() ? "/" : root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      end_(std::chrono::steady_clock::now() + kMaxTime) {
    if (root_ < 0)
        throw Failure(kExitFailed, fmt::format("{} cannot be opened: {}", root, systemErrorText(errno)));
}

FileHasher::~FileHasher() {
    close(root_);
}

std::optional<Hashes> FileHasher::hash(const std::string& path, std::string& reason) const {
    const Descriptor file(openBelow(root_, path));
    struct stat status {};
    if (file.get() < 0 || fstat(file.get(), &status) != 0) {
        reason = systemErrorText(errno);
        return std::nullopt;
    }
    reason = refusalOf(status);
    if (!reason.empty()) return std::nullopt;
    Digest digest;
    std::vector<char> block(kBlockSize);
    std::size_t total = 0;
    while (true) {
        const ssize_t count = read(file.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) reason = systemErrorText(errno);
        if (count <= 0) break;
        total += static_cast<std::size_t>(count);
        if (total > kMaxSize) reason = "too large";
        if (std::chrono::steady_clock::now() > end_) reason = "the time is up";
        if (!reason.empty()) break;
        digest.add({block.data(), static_cast<std::size_t>(count)});
    }
    return reason.empty() ? std::optional(digest.finish()) : std::nullopt;
}

}  // namespace zavcli
