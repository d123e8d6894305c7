#include "toolkit/quorvah/report/SharedBuffer.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "kest/Retry.h"

namespace toolkit::quorvah {
namespace {

// Each text starts on a page of its own, so that it can be mapped separately.
std::uint64_t roundedUp(std::uint64_t place) {
    static const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    return (place + page - 1) / page * page;
}

}  // namespace

SharedBuffer::SharedBuffer() : file_(::memfd_create("quorvah", MFD_CLOEXEC)) {
    if (!file_.isOpen()) throw std::system_error(errno, std::generic_category(), "memfd_create");
}

std::optional<std::uint64_t> SharedBuffer::append(std::string_view text) {
    const std::uint64_t place = roundedUp(end_);
    end_ = place;
    while (!text.empty()) {
        const ssize_t count = kest::retryInterrupted(
            [&] { return ::pwrite(file_.number(), text.data(), text.size(), static_cast<off_t>(end_)); });
        if (count <= 0) return std::nullopt;
        end_ += static_cast<std::uint64_t>(count);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return place;
}

std::shared_ptr<const void> SharedBuffer::at(std::uint64_t place, std::uint64_t size) const {
    struct stat status {};
    if (size == 0 || place != roundedUp(place) || ::fstat(file_.number(), &status) != 0) return nullptr;
    const auto whole = static_cast<std::uint64_t>(status.st_size);
    if (place > whole || size > whole - place) return nullptr;
    void* const text = ::mmap(nullptr, size, PROT_READ, MAP_SHARED | MAP_POPULATE, file_.number(),
                              static_cast<off_t>(place));
    if (text == MAP_FAILED) return nullptr;
    return {text, [size](void* mapping) { ::munmap(mapping, size); }};
}

}  // namespace toolkit::quorvah
