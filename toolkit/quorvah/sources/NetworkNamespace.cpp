#include "toolkit/quorvah/sources/NetworkNamespace.h"

#include <net/if.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/quorvah/sources/KernelSocket.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMacSize = 6;

std::string addressOf(const ifreq& request) {
    std::string text;
    for (std::size_t i = 0; i < kMacSize; ++i) {
        if (i > 0) text += ':';
        text += hexDigits(static_cast<unsigned char>(request.ifr_hwaddr.sa_data[i]), 2);
    }
    return text;
}

}  // namespace

NetworkNamespace::NetworkNamespace() : socket_(kernelSocket(AF_INET, SOCK_DGRAM, 0)) {}

bool NetworkNamespace::has(const Root& root, const std::string& interface) const {
    ifreq request{};
    if (!socket_.isOpen() || interface.size() >= sizeof request.ifr_name) return true;
    std::memcpy(request.ifr_name, interface.data(), interface.size());
    if (::ioctl(socket_.number(), SIOCGIFINDEX, &request) != 0) return errno != ENODEV;
    const std::string directory = "/sys/class/net/" + interface + "/";
    const Count index = root.readCount(directory + "ifindex");
    if (index && *index != static_cast<std::uint64_t>(request.ifr_ifindex)) return false;
    if (::ioctl(socket_.number(), SIOCGIFHWADDR, &request) != 0) return true;
    const std::string address = root.readLine(directory + "address");
    return address.size() != 3 * kMacSize - 1 || address == addressOf(request);
}

}  // namespace toolkit::quorvah
