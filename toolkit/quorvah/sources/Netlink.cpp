#include "toolkit/quorvah/sources/Netlink.h"

#include <linux/if_addr.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/time.h>

#include <algorithm>
#include <cstring>

#include "kest/Descriptor.h"
#include "kest/Retry.h"
#include "toolkit/quorvah/sources/KernelSocket.h"

namespace toolkit::quorvah {
namespace {

// Copies a structure from bytes of any alignment. REQUIRES: there are enough bytes.
template <class Struct>
Struct load(std::string_view bytes) {
    Struct value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

// Removes the next attribute from `rest`. Returns false at the end and at an incomplete attribute.
bool nextAttribute(std::string_view& rest, unsigned& type, std::string_view& value) {
    if (rest.size() < sizeof(rtattr)) return false;
    const auto header = load<rtattr>(rest);
    if (header.rta_len < sizeof header || header.rta_len > rest.size()) return false;
    type = header.rta_type & NLA_TYPE_MASK;
    value = rest.substr(sizeof header, header.rta_len - sizeof header);
    rest.remove_prefix(std::min<std::size_t>(RTA_ALIGN(header.rta_len), rest.size()));
    return true;
}

bool loadAddress(std::string_view value, IpAddressBytes& bytes) {
    if (value.size() != 4 && value.size() != bytes.size()) return false;
    bytes = {};
    std::memcpy(bytes.data(), value.data(), value.size());
    return true;
}

void storeAddressAttribute(unsigned type, std::string_view value, bool& hasLocal, NetlinkAddress& address) {
    const bool isWord = value.size() == sizeof(std::uint32_t);
    if (type == IFA_LOCAL) {
        hasLocal = loadAddress(value, address.address);
    } else if (type == IFA_ADDRESS) {
        address.hasPeer = loadAddress(value, address.peer);
    } else if (type == IFA_BROADCAST) {
        address.hasBroadcast = loadAddress(value, address.broadcast);
    } else if (type == IFA_LABEL) {
        address.label = value.substr(0, value.find('\0'));
    } else if (type == IFA_FLAGS && isWord) {
        address.flags = load<std::uint32_t>(value);
    } else if (type == IFA_CACHEINFO && value.size() >= sizeof(ifa_cacheinfo)) {
        address.finite = load<ifa_cacheinfo>(value).ifa_valid != ~std::uint32_t{0};
    } else if (type == IFA_PROTO && value.size() == 1) {
        address.protocol = load<std::uint8_t>(value);
    }
}

void readAddress(std::string_view payload, NetlinkAnswer& answer) {
    if (payload.size() < sizeof(ifaddrmsg)) return;
    const auto head = load<ifaddrmsg>(payload);
    NetlinkAddress address;
    address.family = head.ifa_family;
    address.interface = head.ifa_index;
    address.prefixLength = head.ifa_prefixlen;
    address.scope = head.ifa_scope;
    address.flags = head.ifa_flags;  // 8 bits; the attribute IFA_FLAGS, if present, has all of them
    std::string_view rest = payload.substr(NLMSG_ALIGN(sizeof head));
    bool hasLocal = false;
    unsigned type = 0;
    std::string_view value;
    while (nextAttribute(rest, type, value)) storeAddressAttribute(type, value, hasLocal, address);
    // IFA_ADDRESS is the peer only on a point-to-point link. Otherwise it equals IFA_LOCAL, or IFA_LOCAL is missing.
    if (!hasLocal && !address.hasPeer) return;
    if (!hasLocal) address.address = address.peer;
    if (address.peer == address.address) address.hasPeer = false;
    answer.addresses.push_back(std::move(address));
}

// Adds the gateways of a route with several next hops.
void readNextHops(std::string_view hops, NetlinkGateway gateway, NetlinkAnswer& answer) {
    while (hops.size() >= sizeof(rtnexthop)) {
        const auto hop = load<rtnexthop>(hops);
        if (hop.rtnh_len < sizeof hop || hop.rtnh_len > hops.size()) return;
        std::string_view rest = hops.substr(sizeof hop, hop.rtnh_len - sizeof hop);
        gateway.interface = static_cast<unsigned>(hop.rtnh_ifindex);
        unsigned type = 0;
        std::string_view value;
        while (nextAttribute(rest, type, value)) {
            if (type == RTA_GATEWAY && loadAddress(value, gateway.gateway))
                answer.gateways.push_back(gateway);
        }
        hops.remove_prefix(std::min<std::size_t>(RTNH_ALIGN(hop.rtnh_len), hops.size()));
    }
}

void readRoute(std::string_view payload, NetlinkAnswer& answer) {
    if (payload.size() < sizeof(rtmsg)) return;
    const auto head = load<rtmsg>(payload);
    if (head.rtm_dst_len != 0 || head.rtm_type != RTN_UNICAST || head.rtm_table != RT_TABLE_MAIN) return;
    NetlinkGateway gateway;
    gateway.family = head.rtm_family;
    bool hasGateway = false;
    std::string_view hops;
    std::string_view rest = payload.substr(NLMSG_ALIGN(sizeof head));
    unsigned type = 0;
    std::string_view value;
    while (nextAttribute(rest, type, value)) {
        const bool isWord = value.size() == sizeof(std::uint32_t);
        if (type == RTA_GATEWAY) hasGateway = loadAddress(value, gateway.gateway);
        if (type == RTA_OIF && isWord) gateway.interface = load<std::uint32_t>(value);
        if (type == RTA_PRIORITY && isWord) gateway.metric = load<std::uint32_t>(value);
        if (type == RTA_MULTIPATH) hops = value;
    }
    if (hasGateway) answer.gateways.push_back(gateway);
    readNextHops(hops, gateway, answer);
}

class NetlinkSocket {
  public:
    NetlinkSocket() : socket_(kernelSocket(AF_NETLINK, SOCK_RAW, NETLINK_ROUTE)) {
        // The kernel answers at once or not at all.
        const timeval limit{2, 0};
        if (socket_.isOpen()) setKernelSocket(socket_.number(), SO_RCVTIMEO, &limit, sizeof limit);
    }

    bool ask(std::uint16_t type) const {
        struct {
            nlmsghdr header;
            rtgenmsg body;
        } request{};
        request.header.nlmsg_len = NLMSG_LENGTH(sizeof request.body);
        request.header.nlmsg_type = type;
        request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        request.body.rtgen_family = AF_UNSPEC;
        return sendToKernel(socket_.number(), &request, request.header.nlmsg_len) >= 0;
    }

    // The length of the received block; -1 if there is none.
    ssize_t receive(std::vector<char>& block) const {
        return kest::retryInterrupted(
            [&] { return receiveFromKernel(socket_.number(), block.data(), block.size()); });
    }

  private:
    kest::Descriptor socket_;
};

bool dump(const NetlinkSocket& socket, std::uint16_t type, NetlinkAnswer& answer) {
    if (!socket.ask(type)) return false;
    std::vector<char> block(std::size_t{32} << 10);  // the largest block that the kernel sends
    NetlinkState state = NetlinkState::More;
    while (state == NetlinkState::More) {
        const ssize_t length = socket.receive(block);
        if (length <= 0) return false;
        state = readNetlinkBlock({block.data(), static_cast<std::size_t>(length)}, answer);
    }
    return state == NetlinkState::Done;
}

}  // namespace

NetlinkState readNetlinkBlock(std::string_view block, NetlinkAnswer& answer) {
    while (block.size() >= sizeof(nlmsghdr)) {
        const auto header = load<nlmsghdr>(block);
        if (header.nlmsg_len < sizeof header || header.nlmsg_len > block.size()) break;
        const std::string_view payload = block.substr(NLMSG_HDRLEN, header.nlmsg_len - NLMSG_HDRLEN);
        if (header.nlmsg_type == NLMSG_DONE) return NetlinkState::Done;
        if (header.nlmsg_type == NLMSG_ERROR) return NetlinkState::Failed;
        if (header.nlmsg_type == RTM_NEWADDR) readAddress(payload, answer);
        if (header.nlmsg_type == RTM_NEWROUTE) readRoute(payload, answer);
        block.remove_prefix(std::min<std::size_t>(NLMSG_ALIGN(header.nlmsg_len), block.size()));
    }
    return NetlinkState::More;
}

bool askNetlink(NetlinkAnswer& answer) {
    const NetlinkSocket socket;
    const bool addresses = dump(socket, RTM_GETADDR, answer);
    const bool routes = dump(socket, RTM_GETROUTE, answer);
    return addresses && routes;
}

}  // namespace toolkit::quorvah
