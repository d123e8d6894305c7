#include "toolkit/quorvah/scan/GroupQueue.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

#include "kest/Retry.h"
#include "toolkit/machine/files/WriteAll.h"

namespace toolkit::quorvah {

using Number = std::uint8_t;  // there are fewer than 256 groups

GroupQueue::GroupQueue(std::size_t count) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    out_ = kest::Descriptor(ends[0]);
    in_ = kest::Descriptor(ends[1]);
    std::string numbers;
    for (std::size_t number = 0; number < count; ++number) numbers += static_cast<char>(number);
    if (!writeAll(in_.number(), numbers)) throw std::system_error(errno, std::generic_category(), "write");
}

std::optional<std::size_t> GroupQueue::take() {
    Number number = 0;
    const ssize_t size =
        kest::retryInterrupted([&] { return ::read(out_.number(), &number, sizeof number); });
    return size == sizeof number ? std::optional<std::size_t>(number) : std::nullopt;
}

}  // namespace toolkit::quorvah
