#include "toolkit/quorvah/sources/ProcNet.h"

#include <net/route.h>

#include <algorithm>
#include <charconv>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {
namespace {

template <class Number>
bool readNumber(std::string_view text, int base, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size();
}

bool readIpv6Bytes(std::string_view hex, IpAddressBytes& bytes) {
    if (hex.size() != 2 * bytes.size()) return false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (!readNumber(hex.substr(2 * i, 2), 16, bytes[i])) return false;
    }
    return true;
}

// An entry of an address in the trie: "/32 host LOCAL".
struct TrieEntry {
    Ipv4 address = 0;
    int prefixLength = 0;
    std::string_view scope;
    std::string_view type;
};

std::vector<TrieEntry> readTrieEntries(std::string_view text) {
    std::vector<TrieEntry> entries;
    Ipv4 address = 0;
    bool known = false;
    std::string_view line;
    while (nextLine(text, line)) {
        const std::string_view word = nextWord(line);
        if (word == "|--") {
            known = readIpv4(nextWord(line), address);
        } else if (known && !word.empty() && word.front() == '/') {
            TrieEntry entry{address, 0, nextWord(line), nextWord(line)};
            const bool read = readNumber(word.substr(1), 10, entry.prefixLength);
            if (read && entry.prefixLength >= 0 && entry.prefixLength <= 32) entries.push_back(entry);
        }
    }
    return entries;
}

bool holds(const TrieEntry& network, Ipv4 address) {
    const Ipv4 mask = maskOf(network.prefixLength);
    return (network.address & mask) == (address & mask);
}

Ipv4 highestOf(const TrieEntry& network) {
    return network.address | ~maskOf(network.prefixLength);
}

// Only the loopback interface has a network of which every address is local.
bool isLoopbackNetwork(const TrieEntry& entry) {
    return entry.prefixLength < 32 && entry.scope == "host" && entry.type == "LOCAL";
}

// Whether the entry is the network of an address. The kernel adds an entry for its broadcast address, unless the network
// has only two addresses. Other routes to directly connected hosts, such as those of WireGuard, have none.
bool isNetwork(const TrieEntry& entry, const std::vector<TrieEntry>& entries) {
    if (isLoopbackNetwork(entry)) return true;
    if (entry.prefixLength >= 32 || entry.scope != "link" || entry.type != "UNICAST") return false;
    return entry.prefixLength == 31 || std::ranges::any_of(entries, [&entry](const TrieEntry& other) {
               return other.type == "BROADCAST" && other.address == highestOf(entry);
           });
}

std::vector<TrieEntry> networksOf(const std::vector<TrieEntry>& entries) {
    std::vector<TrieEntry> networks;
    for (const TrieEntry& entry : entries) {
        if (isNetwork(entry, entries)) networks.push_back(entry);
    }
    return networks;
}

FibTrieAddress completed(Ipv4 address, const std::vector<TrieEntry>& networks) {
    FibTrieAddress result;
    result.address = address;
    for (const TrieEntry& network : networks) {
        if (!holds(network, address) || network.prefixLength <= result.prefixLength) continue;
        result.prefixLength = network.prefixLength;
        // The kernel lists a broadcast address of the loopback interface, which has none.
        result.loopback = isLoopbackNetwork(network);
        result.broadcastKnown = !result.loopback && network.prefixLength < 31;
        result.broadcast = result.broadcastKnown ? highestOf(network) : 0;
    }
    return result;
}

bool readRouteLine(std::string_view line, Ipv4Route& route) {
    unsigned flags = 0;
    route.interface = nextWord(line);
    if (!readNumber(nextWord(line), 16, route.destination)) return false;
    if (!readNumber(nextWord(line), 16, route.gateway)) return false;
    if (!readNumber(nextWord(line), 16, flags)) return false;
    nextWord(line);  // references
    nextWord(line);  // uses
    if (!readNumber(nextWord(line), 10, route.metric)) return false;
    if (!readNumber(nextWord(line), 16, route.mask)) return false;
    return (flags & RTF_UP) != 0 && (flags & RTF_REJECT) == 0;
}

void swapBytes(Ipv4Route& route) {
    for (Ipv4* const value : {&route.destination, &route.gateway, &route.mask})
        *value = __builtin_bswap32(*value);
}

bool readInet6Line(std::string_view line, Inet6Address& address) {
    unsigned index = 0;
    if (!readIpv6Bytes(nextWord(line), address.address)) return false;
    if (!readNumber(nextWord(line), 16, index)) return false;
    if (!readNumber(nextWord(line), 16, address.prefixLength) || address.prefixLength > 128) return false;
    if (!readNumber(nextWord(line), 16, address.scope)) return false;
    if (!readNumber(nextWord(line), 16, address.flags)) return false;
    address.interface = nextWord(line);
    return !address.interface.empty();
}

bool readIpv6RouteLine(std::string_view line, Ipv6DefaultRoute& route) {
    IpAddressBytes destination{};
    unsigned prefixLength = 0;
    unsigned flags = 0;
    if (!readIpv6Bytes(nextWord(line), destination)) return false;
    if (!readNumber(nextWord(line), 16, prefixLength) || prefixLength != 0) return false;
    nextWord(line);  // source prefix
    nextWord(line);  // length of the source prefix
    if (!readIpv6Bytes(nextWord(line), route.gateway)) return false;
    if (!readNumber(nextWord(line), 16, route.metric)) return false;
    nextWord(line);  // references
    nextWord(line);  // uses
    if (!readNumber(nextWord(line), 16, flags)) return false;
    route.interface = nextWord(line);
    return (flags & RTF_UP) != 0 && (flags & RTF_GATEWAY) != 0 && !route.interface.empty();
}

}  // namespace

std::vector<FibTrieAddress> readFibTrie(std::string_view text) {
    const std::vector<TrieEntry> entries = readTrieEntries(text);
    const std::vector<TrieEntry> networks = networksOf(entries);
    std::vector<FibTrieAddress> addresses;
    for (const TrieEntry& entry : entries) {
        if (entry.prefixLength != 32 || entry.scope != "host" || entry.type != "LOCAL") continue;
        // The tables "Main" and "Local" are usually the same trie, so addresses appear twice.
        const bool seen = std::any_of(addresses.begin(), addresses.end(), [&](const FibTrieAddress& address) {
            return address.address == entry.address;
        });
        if (!seen) addresses.push_back(completed(entry.address, networks));
    }
    return addresses;
}

std::vector<Ipv4Route> readRoutes(std::string_view text) {
    std::vector<Ipv4Route> routes = parseLines(text, readRouteLine);
    // The addresses are numbers in the byte order of the machine that wrote the file. The byte order is recognized by
    // the masks, which have no gaps if they are read correctly.
    const bool littleEndian = std::all_of(routes.begin(), routes.end(), [](const Ipv4Route& route) {
        return prefixLengthOf(__builtin_bswap32(route.mask)) >= 0;
    });
    if (littleEndian) std::for_each(routes.begin(), routes.end(), swapBytes);
    return routes;
}

std::vector<Inet6Address> readIfInet6(std::string_view text) {
    return parseLines(text, readInet6Line);
}

std::vector<Ipv6DefaultRoute> readIpv6DefaultRoutes(std::string_view text) {
    return parseLines(text, readIpv6RouteLine);
}

}  // namespace toolkit::quorvah
