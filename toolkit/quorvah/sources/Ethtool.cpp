#include "toolkit/quorvah/sources/Ethtool.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/quorvah/sources/KernelSocket.h"

namespace toolkit::quorvah {
namespace {

// The text in an array that may lack a terminating zero. Drivers write "N/A" for a missing value.
template <std::size_t size>
std::string textOf(const char (&array)[size]) {
    std::string text(array, strnlen(array, size));
    return text == "N/A" ? std::string() : text;
}

std::string hexBytes(const unsigned char* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) text += ':';
        text += hexDigits(bytes[i], 2);
    }
    return text;
}

}  // namespace

Ethtool::Ethtool() : socket_(kernelSocket(AF_INET, SOCK_DGRAM, 0)) {}

bool Ethtool::ask(const std::string& interface, void* command) const {
    ifreq request{};
    if (interface.size() >= sizeof request.ifr_name) return false;
    std::memcpy(request.ifr_name, interface.data(), interface.size());
    request.ifr_data = static_cast<char*>(command);
    return ioctl(socket_.number(), SIOCETHTOOL, &request) == 0;
}

std::optional<DriverInfo> Ethtool::driver(const std::string& interface) const {
    ethtool_drvinfo info{};
    info.cmd = ETHTOOL_GDRVINFO;
    if (!ask(interface, &info)) return {};
    return DriverInfo{textOf(info.driver), textOf(info.version), textOf(info.fw_version)};
}

std::string Ethtool::permanentAddress(const std::string& interface) const {
    constexpr std::size_t kMaxAddressSize = 32;
    constexpr std::size_t kHead = offsetof(ethtool_perm_addr, data);
    alignas(ethtool_perm_addr) unsigned char buffer[kHead + kMaxAddressSize] = {};
    ethtool_perm_addr head{};
    head.cmd = ETHTOOL_GPERMADDR;
    head.size = kMaxAddressSize;
    std::memcpy(buffer, &head, kHead);
    if (!ask(interface, buffer)) return {};
    std::memcpy(&head, buffer, kHead);
    const std::size_t size = std::min<std::size_t>(head.size, kMaxAddressSize);
    const unsigned char* const bytes = buffer + kHead;
    const bool none = std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
    return none ? std::string() : hexBytes(bytes, size);
}

}  // namespace toolkit::quorvah
