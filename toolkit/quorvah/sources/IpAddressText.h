// Conversion of IP addresses to and from text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

// In dotted decimal notation. `address` is in host byte order.
std::string ipv4Text(std::uint32_t address);

// Reads dotted decimal notation. Returns false and leaves `address` unchanged if the text is something else.
bool readIpv4(std::string_view text, std::uint32_t& address);

// The bytes of an IPv6 address, or of an IPv4 address in the first four, in network byte order.
using IpAddressBytes = std::array<unsigned char, 16>;

// The IPv4 address in host byte order.
std::uint32_t ipv4Of(const IpAddressBytes& bytes);

// In the form of RFC 5952.
std::string ipv6Text(const IpAddressBytes& bytes);

// Convert between prefix lengths (0 to 32) and masks in host byte order. The prefix length is -1 if the mask has
// gaps.
std::uint32_t maskOf(int prefixLength);
int prefixLengthOf(std::uint32_t mask);

}  // namespace toolkit::quorvah
