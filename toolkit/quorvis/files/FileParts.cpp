#include "toolkit/quorvis/files/FileParts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "toolkit/quorvis/leaves/Machine.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;

}  // namespace

FileParts::FileParts(kest::Descriptor file, Effort* effort) : file_(std::move(file)), effort_(effort) {
    struct stat status {};
    if (::fstat(file_.number(), &status) == 0) size_ = static_cast<std::uint64_t>(status.st_size);
}

bool FileParts::read(std::uint64_t offset, std::uint64_t length, std::string& bytes) const {
    bytes.clear();
    if (offset > size_ || length > size_ - offset) return false;
    bytes.resize(length);
    std::uint64_t done = 0;
    while (done < length) {
        const std::size_t piece = std::min(length - done, kPiece);
        if (effort_ != nullptr) effort_->read(piece);
        const ssize_t count =
            ::pread(file_.number(), bytes.data() + done, piece, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::uint64_t>(count);
    }
    bytes.resize(done);
    return done == length;
}

std::string FileParts::readUpTo(std::uint64_t offset, std::uint64_t length) const {
    std::string bytes;
    if (offset < size_) read(offset, std::min(length, size_ - offset), bytes);
    return bytes;
}

std::optional<FileParts> partsOf(const std::string& path, Machine& machine, LeafResult& result) {
    Files::Opening opening = machine.files().open(path);
    result.incomplete = opening.access == Access::Failed;
    if (opening.event) result.events.push_back(std::move(*opening.event));
    if (opening.access != Access::Ok) return std::nullopt;
    return FileParts(std::move(opening.file), &machine.effort());
}

}  // namespace toolkit::quorvis
