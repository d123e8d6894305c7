#include "toolkit/quorvis/files/FileBytes.h"

#include <nettle/sha2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <vector>

#include "kest/Retry.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;

ssize_t readAt(int file, char* buffer, std::size_t size, std::uint64_t offset, const OnRead& onRead) {
    onRead(size);
    return kest::retryInterrupted([&] { return ::pread(file, buffer, size, static_cast<off_t>(offset)); });
}

// -1 when the size is unknown.
off_t sizeOf(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 ? status.st_size : -1;
}

// Whether more bytes were read than the file had. The size of files that the kernel generates is 0.
bool hasGrown(off_t size, std::uint64_t held) {
    return size > 0 && held > static_cast<std::uint64_t>(size);
}

// Calls `attempt` with the size of the file, and a second time if the size changed meanwhile.
template <typename Attempt>
BytesRead untilSteady(int file, off_t before, const Attempt& attempt) {
    for (int i = 0; i < 2; ++i) {
        const BytesRead result = attempt(before);
        if (result == BytesRead::Failed) return result;
        const off_t after = sizeOf(file);
        if (result != BytesRead::Changed && after == before) return result;
        before = after;
    }
    return BytesRead::Changed;
}

BytesRead readOnce(int file, off_t size, std::uint64_t limit, bool whole, std::string& bytes,
                   const OnRead& onRead) {
    const auto expected = static_cast<std::uint64_t>(std::max<off_t>(size, 0));
    // One byte beyond the limit shows that the file exceeds it.
    const std::uint64_t max = whole && limit != UINT64_MAX ? limit + 1 : limit;
    // One byte beyond the size detects the end of the file without another call.
    std::uint64_t room = std::min(max, std::max<std::uint64_t>(expected + 1, 4096));
    std::uint64_t held = 0;
    BytesRead result = BytesRead::Start;
    for (bool more = true; more;) {
        bytes.resize(static_cast<std::size_t>(room));
        const std::size_t wanted = std::min(static_cast<std::size_t>(room - held), kBlockSize);
        const ssize_t count = readAt(file, bytes.data() + held, wanted, held, onRead);
        if (count < 0) return BytesRead::Failed;
        held += static_cast<std::uint64_t>(count);
        const bool atEnd = count == 0 || (static_cast<std::size_t>(count) < wanted && held == expected);
        more = !hasGrown(size, held) && !atEnd && held < max;
        if (atEnd) result = BytesRead::All;
        if (held == room) room = std::min(max, room * 2);
    }
    bytes.resize(static_cast<std::size_t>(held));
    if (hasGrown(size, held)) return BytesRead::Changed;
    return whole && held >= max ? BytesRead::TooMany : result;
}

BytesRead hashOnce(int file, off_t size, std::uint64_t limit, std::vector<char>& buffer, std::string& sum,
                   const OnRead& onRead) {
    sha256_ctx hash;
    sha256_init(&hash);
    for (std::uint64_t done = 0;;) {
        const ssize_t count = readAt(file, buffer.data(), buffer.size(), done, onRead);
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

BytesRead readBytes(const kest::Descriptor& file, std::uint64_t size, std::uint64_t limit, bool whole,
                    std::string& bytes, const OnRead& onRead) {
    return untilSteady(file.number(), static_cast<off_t>(size), [&](off_t current) {
        return readOnce(file.number(), current, limit, whole, bytes, onRead);
    });
}

BytesRead sha256Of(const kest::Descriptor& file, std::uint64_t limit, std::string& sum,
                   const OnRead& onRead) {
    std::vector<char> buffer(std::size_t{256} << 10);
    return untilSteady(file.number(), sizeOf(file.number()),
                       [&](off_t size) { return hashOnce(file.number(), size, limit, buffer, sum, onRead); });
}

}  // namespace toolkit::quorvis
