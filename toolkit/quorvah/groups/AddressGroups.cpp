#include "toolkit/quorvah/groups/AddressGroups.h"

#include <net/if.h>

namespace toolkit::quorvah {
namespace {

std::string interfaceName(unsigned index) {
    char name[IF_NAMESIZE];
    return if_indextoname(index, name) == nullptr ? std::string() : std::string(name);
}

NetlinkAnswer askKernel(Report& report) {
    NetlinkAnswer answer;
    if (!askNetlink(answer)) report.partial("netlink");
    return answer;
}

std::string readOrEmpty(const Root& root, std::string_view path) {
    // Each address is sought in the networks of all others.
    constexpr std::size_t kLargest = std::size_t{1} << 20;
    return root.read(path, kLargest).value_or(std::string());
}

// The file of a tree that tells of its addresses.
std::string readSource(const Root& root, std::string_view path, Report& report) {
    if (!root.exists(path)) report.notApplicable("not-in-tree");
    return readOrEmpty(root, path);
}

}  // namespace

std::vector<Ipv4Address> findIpv4Addresses(const Root& root, Report& report) {
    if (root.live()) return ipv4Addresses(askKernel(report), interfaceName);
    return ipv4Addresses(readFibTrie(readSource(root, "/proc/net/fib_trie", report)),
                         readRoutes(readOrEmpty(root, "/proc/net/route")));
}

std::vector<Ipv6Address> findIpv6Addresses(const Root& root, Report& report) {
    if (root.live()) return ipv6Addresses(askKernel(report), interfaceName);
    return ipv6Addresses(readIfInet6(readSource(root, "/proc/net/if_inet6", report)),
                         readIpv6DefaultRoutes(readOrEmpty(root, "/proc/net/ipv6_route")));
}

std::string macAddress(const Root& root, const std::string& interface) {
    if (interface.empty()) return {};
    std::string address = root.readLine("/sys/class/net/" + interface + "/address");
    // Six bytes at least: those of a tunnel are its IPv4 address.
    static constexpr std::size_t kShortest = 17;
    if (address.size() < kShortest || address.find_first_not_of("0:") == std::string::npos) return {};
    return address;
}

}  // namespace toolkit::quorvah
