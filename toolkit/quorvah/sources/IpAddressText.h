// Addresses as text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

// Dotted; `address` in host byte order.
std::string ipv4Text(std::uint32_t address);

// False, with `address` untouched, for what is no dotted address.
bool readIpv4(std::string_view text, std::uint32_t& address);

// The bytes of an IPv4 (the first four) or IPv6 address, in network order.
using IpAddressBytes = std::array<unsigned char, 16>;

// The IPv4 address in host byte order.
std::uint32_t ipv4Of(const IpAddressBytes& bytes);

// RFC 5952.
std::string ipv6Text(const IpAddressBytes& bytes);

// The mask of a prefix of 0 to 32 bits, and the prefix of a mask, -1 when its ones have gaps; host byte
// order.
std::uint32_t maskOf(int prefixLength);
int prefixLengthOf(std::uint32_t mask);

}  // namespace toolkit::quorvah
