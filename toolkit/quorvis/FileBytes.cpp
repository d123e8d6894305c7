#include "toolkit/quorvis/FileBytes.h"

#include <nettle/sha2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <vector>

namespace toolkit::quorvis {

namespace {

ssize_t readAt(int file, char* buffer, std::size_t size, std::uint64_t offset) {
    for (;;) {
        const ssize_t count = ::pread(file, buffer, size, static_cast<off_t>(offset));
        if (count >= 0 || errno != EINTR) return count;
    }
}

// -1 when it cannot be told.
off_t sizeOf(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 ? status.st_size : -1;
}

// Whether there is more than the size tells, which is 0 for files that the kernel makes up when they are read.
bool hasGrown(off_t size, std::uint64_t held) {
    return size > 0 && held > static_cast<std::uint64_t>(size);
}

// Calls `attempt` with the size of the file, and once more when the size changed meanwhile.
template <typename Attempt>
BytesRead untilSteady(int file, const Attempt& attempt) {
    for (int i = 0; i < 2; ++i) {
        const off_t before = sizeOf(file);
        const BytesRead result = attempt(before);
        if (result == BytesRead::Failed) return result;
        if (result != BytesRead::Changed && sizeOf(file) == before) return result;
    }
    return BytesRead::Changed;
}

BytesRead readOnce(int file, off_t size, std::uint64_t limit, bool whole, std::string& bytes) {
    const auto expected = static_cast<std::uint64_t>(std::max<off_t>(size, 0));
    const std::uint64_t most =
        whole && limit != UINT64_MAX ? limit + 1 : limit;  // one more tells of yet more
    bytes.clear();
    // One byte more than the size shows the end of the file without another call.
    std::uint64_t room = std::min(most, std::max<std::uint64_t>(expected + 1, 4096));
    for (std::uint64_t held = 0;;) {
        bytes.resize(static_cast<std::size_t>(room));
        const ssize_t count = readAt(file, bytes.data() + held, bytes.size() - held, held);
        held += static_cast<std::uint64_t>(std::max<ssize_t>(count, 0));
        const bool asked = held < room;
        bytes.resize(static_cast<std::size_t>(held));
        if (count < 0) return BytesRead::Failed;
        if (hasGrown(size, held)) return BytesRead::Changed;
        if (count == 0 || (asked && held == expected)) return BytesRead::All;
        if (held >= most) return whole ? BytesRead::TooMany : BytesRead::Start;
        if (held == room) room = std::min(most, room * 2);
    }
}

BytesRead hashOnce(int file, off_t size, std::uint64_t limit, std::vector<char>& buffer, std::string& sum) {
    sha256_ctx hash;
    sha256_init(&hash);
    for (std::uint64_t done = 0;;) {
        const ssize_t count = readAt(file, buffer.data(), buffer.size(), done);
        if (count < 0) return BytesRead::Failed;
        if (count == 0) break;
        done += static_cast<std::uint64_t>(count);
        if (hasGrown(size, done)) return BytesRead::Changed;
        if (done > limit) return BytesRead::TooMany;
        sha256_update(&hash, static_cast<std::size_t>(count),
                      reinterpret_cast<const std::uint8_t*>(buffer.data()));
    }
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest;
    sha256_digest(&hash, digest.size(), digest.data());
    constexpr std::string_view kDigits = "0123456789abcdef";
    sum.clear();
    for (const std::uint8_t byte : digest) sum.append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 15U]);
    return BytesRead::All;
}

}  // namespace

BytesRead readBytes(const kest::Descriptor& file, std::uint64_t limit, bool whole, std::string& bytes) {
    return untilSteady(file.number(),
                       [&](off_t size) { return readOnce(file.number(), size, limit, whole, bytes); });
}

BytesRead sha256Of(const kest::Descriptor& file, std::uint64_t limit, std::string& sum) {
    std::vector<char> buffer(std::size_t{256} << 10);
    return untilSteady(file.number(),
                       [&](off_t size) { return hashOnce(file.number(), size, limit, buffer, sum); });
}

}  // namespace toolkit::quorvis
