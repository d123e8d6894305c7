#include "toolkit/machine/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "kest/Descriptor.h"
#include "toolkit/machine/WriteAll.h"

namespace toolkit {

namespace {

[[noreturn]] void fail(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

using Content = std::function<void(const TextSink& sink)>;

void writeContent(int descriptor, const Content& write, const std::string& path) {
    write([&](std::string_view piece) {
        if (!writeAll(descriptor, piece)) fail(path);
    });
}

// Keeps the signals that end a program waiting, so that no stray file stays behind.
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

// A new file beside the one that it is to replace; deleted unless it does.
class SiblingFile {
  public:
    explicit SiblingFile(const std::string& path) : target_(path), name_(path + ".XXXXXX") {
        file_ = kest::Descriptor(::mkostemp(name_.data(), O_CLOEXEC));
        if (!file_.isOpen()) fail(target_);
    }
    ~SiblingFile() {
        if (!replaced_) ::unlink(name_.c_str());
    }
    SiblingFile(const SiblingFile&) = delete;
    SiblingFile& operator=(const SiblingFile&) = delete;

    void fill(const Content& write, mode_t mode) const {
        if (::fchmod(file_.number(), mode) != 0) fail(target_);
        writeContent(file_.number(), write, target_);
        if (::fsync(file_.number()) != 0) fail(target_);
    }

    void replaceTarget() {
        if (std::rename(name_.c_str(), target_.c_str()) != 0) fail(target_);
        replaced_ = true;
    }

  private:
    std::string target_;
    std::string name_;
    kest::Descriptor file_;
    bool replaced_ = false;
};

mode_t modeOfNewFiles() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

void writeInPlace(const std::string& path, const Content& write) {
    const kest::Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.isOpen()) fail(path);
    writeContent(file.number(), write, path);
}

struct Free {
    void operator()(char* block) const { std::free(block); }
};

}  // namespace

void writeOutputFile(const std::string& path, std::string_view content) {
    writeOutputFile(path, [content](const TextSink& sink) { sink(content); });
}

void writeOutputFile(const std::string& path, const Content& write) {
    struct stat status {};
    bool exists = ::lstat(path.c_str(), &status) == 0;
    const bool link = exists && S_ISLNK(status.st_mode);
    if (link) exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        writeInPlace(path, write);
        return;
    }
    // A symbolic link stays, and the file that it leads to is replaced.
    const std::unique_ptr<char, Free> target(link && exists ? ::realpath(path.c_str(), nullptr) : nullptr);
    const SignalsHeld held;
    SiblingFile sibling(target ? target.get() : path);
    sibling.fill(write, exists ? status.st_mode & 07777U : modeOfNewFiles());
    sibling.replaceTarget();
}

void writePrivateFile(const std::string& path, const Content& write) {
    const SignalsHeld held;
    SiblingFile sibling(path);
    sibling.fill(write, 0600);
    sibling.replaceTarget();
}

}  // namespace toolkit
