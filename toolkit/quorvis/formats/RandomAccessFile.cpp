#include "toolkit/quorvis/formats/RandomAccessFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kBlockSize = std::uint64_t{1} << 20;

}  // namespace

RandomAccessFile::RandomAccessFile(kest::Descriptor file, BeforeRead beforeRead, std::string start)
    : file_(std::move(file)), beforeRead_(std::move(beforeRead)), content_(std::move(start)) {
    struct stat status {};
    if (::fstat(file_.number(), &status) == 0) size_ = static_cast<std::uint64_t>(status.st_size);
}

RandomAccessFile::RandomAccessFile(std::string content, BeforeRead beforeRead)
    : beforeRead_(std::move(beforeRead)), content_(std::move(content)), size_(content_.size()) {}

RandomAccessFile::RandomAccessFile(const RandomAccessFile& whole, std::uint64_t offset, std::uint64_t size)
    : beforeRead_(whole.beforeRead_), whole_(&whole), start_(offset), size_(size) {}

bool RandomAccessFile::read(std::uint64_t offset, std::uint64_t length, std::string& bytes) const {
    bytes.clear();
    if (offset > size_ || length > size_ - offset) return false;
    if (whole_ != nullptr) return whole_->read(start_ + offset, length, bytes);
    if (offset + length <= content_.size()) {
        if (beforeRead_) beforeRead_(length);
        bytes.assign(content_, offset, length);
        return true;
    }
    bytes.resize(length);
    return readDescriptor(offset, bytes);
}

bool RandomAccessFile::readDescriptor(std::uint64_t offset, std::string& bytes) const {
    const std::uint64_t length = bytes.size();
    std::uint64_t done = 0;
    while (done < length) {
        const std::size_t block = std::min(length - done, kBlockSize);
        if (beforeRead_) beforeRead_(block);
        const ssize_t count =
            ::pread(file_.number(), bytes.data() + done, block, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::uint64_t>(count);
    }
    bytes.resize(done);
    return done == length;
}

std::string RandomAccessFile::readUpTo(std::uint64_t offset, std::uint64_t length) const {
    std::string bytes;
    if (offset < size_) read(offset, std::min(length, size_ - offset), bytes);
    return bytes;
}

}  // namespace toolkit::quorvis
