#include "toolkit/machine/files/InputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace toolkit {
namespace {

InputFile::State stateOf(int error) {
    if (error == ENOENT || error == ENOTDIR) return InputFile::State::Missing;
    if (error == EACCES || error == EPERM) return InputFile::State::Denied;
    return InputFile::State::Unreadable;
}

}  // namespace

InputFile::InputFile(const Root& root, const std::string& path) : file_(root.open(path)) {
    struct stat status {};
    if (!file_.isOpen()) {
        state_ = stateOf(errno);
    } else if (::fstat(file_.number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        state_ = State::Unreadable;
        file_.close();  // reading a device may have side effects
    } else {
        state_ = State::Open;
        size_ = static_cast<std::uint64_t>(status.st_size);
    }
}

std::size_t InputFile::readAt(std::uint64_t offset, std::span<char> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(file_.number(), bytes.data() + done, bytes.size() - done,
                                      static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) failed_ = true;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

}  // namespace toolkit
