#include "cli/Output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/Failure.h"
#include "cli/StandardStreams.h"

namespace zavcli {

namespace {

std::string systemError() {
    return std::generic_category().message(errno);
}

// The permissions of the file that is replaced, else those that the umask leaves to a new file.
mode_t permissions(const std::string& target) {
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) return status.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), target_(path_) {
    struct stat status {};
    const bool exists = stat(path_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) fail();
        return;
    }
    if (exists) {
        if (access(path_.c_str(), W_OK) != 0) fail();
        target_ = std::filesystem::canonical(path_).string();
    }
    openBeside(target_);
}

void OutputFile::openBeside(const std::string& target) {
    temporary_ = target + ".XXXXXX";
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ >= 0) return;
    temporary_.clear();
    fail();
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::fail() const {
    throw Failure(kExitFailed, fmt::format("cannot write '{}': {}", path_, systemError()));
}

void OutputFile::commit(std::string_view text) {
    if (!writeAll(descriptor_, text)) fail();
    if (!temporary_.empty()) {
        if (fchmod(descriptor_, permissions(target_)) != 0 || fsync(descriptor_) != 0) fail();
    }
    const int closed = close(descriptor_);
    descriptor_ = -1;
    if (closed != 0) fail();
    if (temporary_.empty()) return;
    if (rename(temporary_.c_str(), target_.c_str()) != 0) fail();
    temporary_.clear();
}

void writeStandardOutput(std::string_view text) {
    if (!writeAll(STDOUT_FILENO, text))
        throw Failure(kExitFailed, fmt::format("cannot write to standard output: {}", systemError()));
}

}  // namespace zavcli
