#include "toolkit/machine/files/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <system_error>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/WriteAll.h"

namespace toolkit {

namespace {

constexpr mode_t kMode = 0600;

[[noreturn]] void fail(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

using Content = std::function<void(const TextSink& sink)>;

// Blocks the signals that end a program, so that no temporary file stays behind.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&signals, signal);
        sigprocmask(SIG_BLOCK, &signals, &before_);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t before_{};
};

// Describes a kind of file that is not replaced; null for a file that may be replaced.
const char* whatBlocks(mode_t mode) {
    if (S_ISDIR(mode)) return "it is a directory";
    if (S_ISFIFO(mode)) return "it is a pipe";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "it is a device";
    if (S_ISSOCK(mode)) return "it is a socket";
    return nullptr;
}

// The place of an output file. Its directory is kept open, so renaming the directory meanwhile has no effect.
class Place {
  public:
    explicit Place(const std::string& path) : path_(path), name_(path.substr(path.rfind('/') + 1)) {
        const std::string folder = path.substr(0, path.size() - name_.size());
        directory_ =
            kest::Descriptor(::open(folder.empty() ? "." : folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!directory_.isOpen()) fail(path);
        if (name_.empty()) refuse("it is a directory");
        struct stat status {};
        if (::fstatat(directory_.number(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
        if (const char* const what = whatBlocks(status.st_mode)) refuse(what);
        // /dev/stdout is such a link, and must not be replaced.
        if (S_ISLNK(status.st_mode) && leadsToOpenFile()) refuse("it leads to an open file");
    }

    const std::string& path() const { return path_; }
    const std::string& name() const { return name_; }
    int directory() const { return directory_.number(); }

  private:
    [[noreturn]] void refuse(const char* what) const {
        throw std::runtime_error(path_ + ": no regular file can be put there: " + what);
    }

    bool leadsToOpenFile() const {
        std::array<char, 32> text;
        const ssize_t length = ::readlinkat(directory_.number(), name_.c_str(), text.data(), text.size());
        return length > 0 &&
               std::string_view(text.data(), static_cast<std::size_t>(length)).starts_with("/proc/");
    }

    std::string path_;
    std::string name_;
    kest::Descriptor directory_;
};

// A new file in the directory of the file that it will replace, without a name if the file system supports that. It is
// deleted unless it is put into its place.
class NewFile {
  public:
    explicit NewFile(const Place& place) : place_(place) {
        if (::access("/proc/self/fd", X_OK) == 0)  // needed to give the file its name
            file_ =
                kest::Descriptor(::openat(place.directory(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode));
        if (!file_.isOpen()) {
            takeName([this](const char* name) {
                constexpr int kNew = O_CREAT | O_EXCL | O_NOFOLLOW;
                file_ =
                    kest::Descriptor(::openat(place_.directory(), name, O_WRONLY | O_CLOEXEC | kNew, kMode));
                return file_.isOpen();
            });
        }
        if (::fchmod(file_.number(), kMode) != 0) fail(place.path());
    }
    ~NewFile() {
        if (!name_.empty()) ::unlinkat(place_.directory(), name_.c_str(), 0);
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void fill(const Content& write) const {
        write([this](std::string_view piece) {
            if (!writeAll(file_.number(), piece)) fail(place_.path());
        });
        if (::fsync(file_.number()) != 0) fail(place_.path());
    }

    void takePlace() {
        if (name_.empty()) {
            if (link(place_.name().c_str())) return;
            takeName([this](const char* name) { return link(name); });
        }
        const int directory = place_.directory();
        if (::renameat(directory, name_.c_str(), directory, place_.name().c_str()) != 0) fail(place_.path());
        name_.clear();
    }

  private:
    bool link(const char* name) const {
        const std::string self = "/proc/self/fd/" + std::to_string(file_.number());
        return ::linkat(AT_FDCWD, self.c_str(), place_.directory(), name, AT_SYMLINK_FOLLOW) == 0;
    }

    // Tries random names until `take` accepts one.
    template <class Take>
    void takeName(const Take& take) {
        constexpr std::size_t kMaxLength = 200;  // leaves room for the suffix
        std::random_device random;
        for (int tries = 0; tries < 100; ++tries) {
            const std::string name =
                place_.name().substr(0, kMaxLength) + '.' + std::to_string(random()) + ".new";
            if (take(name.c_str())) {
                name_ = name;
                return;
            }
            if (errno != EEXIST) break;
        }
        fail(place_.path());
    }

    const Place& place_;
    kest::Descriptor file_;
    std::string name_;
};

}  // namespace

void writeOutputFile(const std::string& path, std::string_view content) {
    writeOutputFile(path, [content](const TextSink& sink) { sink(content); });
}

void writeOutputFile(const std::string& path, const Content& write) {
    const Place place(path);
    const SignalsHeld held;
    NewFile file(place);
    file.fill(write);
    file.takePlace();
}

}  // namespace toolkit
