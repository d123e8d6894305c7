#pragma once

#include <cerrno>

namespace kest {

// The result of a system call that is repeated while signals interrupt it. The call reports an error by a negative
// result and errno.
//     const ssize_t length = retryInterrupted([&] { return ::read(number, buffer, size); });
template <class Call>
auto retryInterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

}  // namespace kest
