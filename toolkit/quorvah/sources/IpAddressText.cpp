#include "toolkit/quorvah/sources/IpAddressText.h"

#include <arpa/inet.h>

#include <bit>

namespace toolkit::quorvah {

std::string ipv4Text(std::uint32_t address) {
    char text[INET_ADDRSTRLEN];
    const in_addr network{htonl(address)};
    return inet_ntop(AF_INET, &network, text, sizeof text) == nullptr ? std::string() : std::string(text);
}

bool readIpv4(std::string_view text, std::uint32_t& address) {
    in_addr network{};
    if (inet_pton(AF_INET, std::string(text).c_str(), &network) != 1) return false;
    address = ntohl(network.s_addr);
    return true;
}

std::uint32_t ipv4Of(const IpAddressBytes& bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

std::string ipv6Text(const IpAddressBytes& bytes) {
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, bytes.data(), text, sizeof text) == nullptr ? std::string()
                                                                           : std::string(text);
}

std::uint32_t maskOf(int prefixLength) {
    return prefixLength <= 0 ? 0 : ~std::uint32_t{0} << (32 - prefixLength);
}

int prefixLengthOf(std::uint32_t mask) {
    const int length = std::countl_one(mask);
    return mask == maskOf(length) ? length : -1;
}

}  // namespace toolkit::quorvah
