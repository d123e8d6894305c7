#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "toolkit/quorvah/sources/Netlink.h"

namespace toolkit::quorvah {
namespace {

class Socket {
  public:
    Socket() : descriptor_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {
        // The kernel answers at once or not at all.
        const timeval limit{2, 0};
        if (descriptor_ >= 0) setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }
    ~Socket() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool ask(std::uint16_t type) const {
        struct {
            nlmsghdr header;
            rtgenmsg body;
        } request{};
        request.header.nlmsg_len = NLMSG_LENGTH(sizeof request.body);
        request.header.nlmsg_type = type;
        request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        request.body.rtgen_family = AF_UNSPEC;
        return send(descriptor_, &request, request.header.nlmsg_len, 0) >= 0;
    }

    // The length of the block, -1 when none came.
    ssize_t receive(std::vector<char>& block) const {
        ssize_t length = -1;
        do {
            length = recv(descriptor_, block.data(), block.size(), 0);
        } while (length < 0 && errno == EINTR);
        return length;
    }

  private:
    int descriptor_;
};

bool dump(const Socket& socket, std::uint16_t type, NetlinkAnswer& answer) {
    if (!socket.ask(type)) return false;
    std::vector<char> block(std::size_t{32} << 10);  // the kernel's largest
    NetlinkState state = NetlinkState::More;
    while (state == NetlinkState::More) {
        const ssize_t length = socket.receive(block);
        if (length <= 0) return false;
        state = readNetlinkBlock({block.data(), static_cast<std::size_t>(length)}, answer);
    }
    return state == NetlinkState::Done;
}

}  // namespace

bool askNetlink(NetlinkAnswer& answer) {
    const Socket socket;
    const bool addresses = dump(socket, RTM_GETADDR, answer);
    const bool routes = dump(socket, RTM_GETROUTE, answer);
    return addresses && routes;
}

}  // namespace toolkit::quorvah
