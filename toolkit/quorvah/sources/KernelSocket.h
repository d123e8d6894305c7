// Sockets that ask the kernel. On some architectures the C library makes all calls for sockets through one other call, whose
// arguments the sandbox cannot see and which it refuses.
#pragma once

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace toolkit::quorvah {

inline int kernelSocket(int family, int kind, int protocol) {
    return static_cast<int>(::syscall(SYS_socket, family, kind | SOCK_CLOEXEC, protocol));
}

inline ssize_t sendToKernel(int socket, const void* message, std::size_t size) {
    return ::syscall(SYS_sendto, socket, message, size, 0, nullptr, 0);
}

inline ssize_t receiveFromKernel(int socket, void* message, std::size_t size) {
    return ::syscall(SYS_recvfrom, socket, message, size, 0, nullptr, nullptr);
}

inline bool setKernelSocket(int socket, int option, const void* value, std::size_t size) {
    return ::syscall(SYS_setsockopt, socket, SOL_SOCKET, option, value, size) == 0;
}

}  // namespace toolkit::quorvah
